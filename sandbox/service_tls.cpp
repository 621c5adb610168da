#include "sandbox/service_tls.h"

#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <string_view>

namespace sandbox {

namespace {

constexpr long CERTIFICATE_DAYS_S = 30L * 24 * 3600;

TlsContext server_context() {
    TlsContext context(SSL_CTX_new(TLS_server_method()));
    // One connection carries one request here, so nothing would ever be resumed.
    if (context) SSL_CTX_set_session_cache_mode(context.get(), SSL_SESS_CACHE_OFF);
    if (context) SSL_CTX_set_num_tickets(context.get(), 0);
    return context;
}

void set_name(X509_NAME* name, const char* text) {
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>(text), -1, -1,
                               0);
}

// A certificate made now. One that names another issuer than itself is signed with a key that nobody keeps.
TlsContext made_tls(const char* subject, const char* issuer) {
    using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
    TlsContext context = server_context();
    const Key key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    const Key issuer_key(EVP_EC_gen("P-256"), &EVP_PKEY_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(X509_new(), &X509_free);
    if (!context || !key || !issuer_key || !certificate) return nullptr;
    const bool self_signed = std::string_view(subject) == issuer;
    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), 1);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), 0);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), CERTIFICATE_DAYS_S);
    X509_set_pubkey(certificate.get(), key.get());
    set_name(X509_get_subject_name(certificate.get()), subject);
    set_name(X509_get_issuer_name(certificate.get()), issuer);
    const bool made =
        X509_sign(certificate.get(), self_signed ? key.get() : issuer_key.get(), EVP_sha256()) > 0 &&
        SSL_CTX_use_certificate(context.get(), certificate.get()) == 1 &&
        SSL_CTX_use_PrivateKey(context.get(), key.get()) == 1;
    return made ? std::move(context) : nullptr;
}

}  // namespace

void FreeTlsContext::operator()(ssl_ctx_st* context) const {
    SSL_CTX_free(context);
}

std::string authority_file() {
    return std::string(BURSARIA_SANDBOX_TLS) + "/ca.pem";
}

TlsContext home_tls() {
    const std::string folder = BURSARIA_SANDBOX_TLS;
    TlsContext context = server_context();
    if (!context) return nullptr;
    const bool loaded =
        SSL_CTX_use_certificate_chain_file(context.get(), (folder + "/server.pem").c_str()) == 1 &&
        SSL_CTX_use_PrivateKey_file(context.get(), (folder + "/server.key").c_str(), SSL_FILETYPE_PEM) == 1;
    return loaded ? std::move(context) : nullptr;
}

TlsContext self_made_tls() {
    return made_tls("local resolver", "local resolver");
}

TlsContext foreign_tls() {
    return made_tls("localhost", "another authority");
}

}  // namespace sandbox
