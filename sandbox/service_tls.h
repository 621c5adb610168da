// TLS identities of the sandbox's services. Each is a context of its own that any number of connections may
// share.
#pragma once

#include <memory>
#include <string>

struct ssl_ctx_st;

namespace sandbox {

struct FreeTlsContext {
    void operator()(ssl_ctx_st* context) const;
};
using TlsContext = std::unique_ptr<ssl_ctx_st, FreeTlsContext>;

// The certificate for "localhost" and 127.0.0.1 that the sandbox's own authority has signed; null if its
// files cannot be read.
TlsContext home_tls();
// A certificate made now and signed by nobody else; null if OpenSSL fails.
TlsContext self_made_tls();
// A certificate for "localhost" by an authority that nobody trusts, made now; null if OpenSSL fails.
TlsContext foreign_tls();
// The file of the sandbox's certificate authority.
std::string authority_file();

}  // namespace sandbox
