// The family's resolver on this machine, which knows the same names as the family's host and proves itself
// with a certificate that nobody has signed (service_tls.h).
#pragma once

#include "sandbox/service_context.h"
#include "sandbox/service_server.h"

namespace sandbox {

ServiceReply answer_resolver(ServiceContext& context, const ServiceRequest& request);

}  // namespace sandbox
