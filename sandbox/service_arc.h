// The transaction processor (ARC, https://github.com/bitcoin-sv/arc): it takes a transaction in the field
// "rawTx" and answers with a "txStatus". Refusals for which it knows the transaction come under HTTP 200,
// others as a problem document under a status of its own.
#pragma once

#include "sandbox/service_context.h"
#include "sandbox/service_server.h"

namespace sandbox {

ServiceReply answer_arc(ServiceContext& context, const ServiceRequest& request);

}  // namespace sandbox
