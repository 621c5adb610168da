// The chain service: address lists, transactions, spends, balances and the broadcast, in the forms that the
// public service's answers have. Where those differ from one answer to another, the address or the
// transaction id decides which form it gets, so that one subject always meets the same form and a journey
// meets them all.
#pragma once

#include <string>

#include "sandbox/service_context.h"
#include "sandbox/service_server.h"

namespace sandbox {

inline constexpr const char* WOC_API_PATH = "/v1/bsv/main";

ServiceReply answer_woc(ServiceContext& context, const ServiceRequest& request);

}  // namespace sandbox
