#include "sandbox/service_resolver.h"

#include "sandbox/service_home.h"
#include "sandbox/service_reply.h"

namespace sandbox {

ServiceReply answer_resolver(ServiceContext& context, const ServiceRequest& request) {
    ServiceReply reply;
    if (answer_alias(context, request, reply)) return reply;
    return json_reply({{"error", "no such path"}}, 404);
}

}  // namespace sandbox
