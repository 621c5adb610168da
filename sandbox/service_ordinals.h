// The token indexer: outputs of an address, token listings, a token and its holders, and the contents of
// inscriptions. It may lag (ServiceContext::index_lag). It lists what token records say and keeps no balance
// of its own, so a record that moves more than it took is listed like any other.
#pragma once

#include "sandbox/service_context.h"
#include "sandbox/service_server.h"

namespace sandbox {

ServiceReply answer_ordinals(ServiceContext& context, const ServiceRequest& request);

}  // namespace sandbox
