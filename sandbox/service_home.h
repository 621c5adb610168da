// The family's own host: submission of transactions, the feed of identity records, the paymail directory in
// both directions, roles and claims, and the receiver of payment receipts.
#pragma once

#include "sandbox/service_context.h"
#include "sandbox/service_server.h"

namespace sandbox {

ServiceReply answer_home(ServiceContext& context, const ServiceRequest& request);

// "/api/bsvalias/address/NAME", which the local resolver serves as well. False for any other request.
bool answer_alias(const ServiceContext& context, const ServiceRequest& request, ServiceReply& reply);

}  // namespace sandbox
