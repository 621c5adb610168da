// The handles of the sandbox for people and for tests that run beside it: mine, order a failure, look at the
// chain, the world and the requests. And the product's download page, which is a service like the others.
//
//   POST /sandbox/mine                                            {"height"}
//   POST /sandbox/fault    {"service", "failure", "times", "path", "slow_ms"}; the failure "none" clears all
//   POST /sandbox/lag      {"transactions"}
//   POST /sandbox/approve  {"wallet_id"}: what the next connect gets; "" refuses, "-" stays silent
//   POST /sandbox/version  {"thousandths"}: what the download page names
//   GET  /sandbox/chain, /sandbox/world, /sandbox/requests, /sandbox/receipts
//   POST /sandbox/requests  forgets the requests seen so far
#pragma once

#include "sandbox/service_context.h"
#include "sandbox/service_server.h"

namespace sandbox {

ServiceReply answer_control(ServiceContext& context, const ServiceRequest& request);

inline constexpr const char* UPDATE_PAGE_PATH = "/download";
ServiceReply answer_update_page(const ServiceContext& context, const ServiceRequest& request);

}  // namespace sandbox
