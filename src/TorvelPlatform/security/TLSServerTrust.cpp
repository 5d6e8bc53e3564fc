#include "TorvelPlatform/security/TLSServerTrust.h"

#include "TorvelPlatform/security/Native.h"

#include <string_view>

namespace torvel {
namespace {

void freeDecision(void*, void* decision, CRYPTO_EX_DATA*, int, long, void*) {
    delete static_cast<TLSTrustDecision*>(decision);
}

int decisionIndex() {
    static const int index = SSL_CTX_get_ex_new_index(0, nullptr, nullptr, nullptr, freeDecision);
    return index;
}

int closeNotifyIndex() {
    static const int index = SSL_get_ex_new_index(0, nullptr, nullptr, nullptr, nullptr);
    return index;
}

// SSL_get_shutdown() will not do: a connection that is cut without close_notify sets the same flag.
void noteCloseNotify(const SSL* ssl, int where, int alert) {
    static int seen = 1;
    if ((where & SSL_CB_READ_ALERT) == SSL_CB_READ_ALERT && (alert & 0xFF) == SSL_AD_CLOSE_NOTIFY)
        SSL_set_ex_data(const_cast<SSL*>(ssl), closeNotifyIndex(), &seen);
}

std::vector<SecCertificate> servedCertificates(X509_STORE_CTX* context) {
    std::vector<SecCertificate> served;
    const auto append = [&served](X509* certificate) {
        if (certificate == nullptr || X509_up_ref(certificate) != 1) return;
        if (auto wrapped = wrapCertificate(X509Ptr(certificate))) served.push_back(std::move(*wrapped));
    };
    append(X509_STORE_CTX_get0_cert(context));
    const STACK_OF(X509)* const sent = X509_STORE_CTX_get0_untrusted(context);
    for (int i = 0; i < sk_X509_num(sent); ++i) append(sk_X509_value(sent, i));
    return served;
}

int judge(X509_STORE_CTX* context, void* decision) {
    ERR_set_mark();  // what a decision runs into, an unreadable store say, is not the handshake's error
    auto trust = SecTrust::createWithCertificates(servedCertificates(context), SecPolicy::createSSL());
    const bool trusted = trust && (*static_cast<TLSTrustDecision*>(decision))(*trust);
    ERR_pop_to_mark();
    X509_STORE_CTX_set_error(context, trusted ? X509_V_OK : X509_V_ERR_APPLICATION_VERIFICATION);
    return trusted ? 1 : 0;
}

}  // namespace

bool installServerTrust(void* sslContext, TLSTrustDecision decision) {
    loadOpenSSL();
    auto* const context = static_cast<SSL_CTX*>(sslContext);
    auto owned = std::make_unique<TLSTrustDecision>(std::move(decision));
    if (SSL_CTX_set_ex_data(context, decisionIndex(), owned.get()) != 1) return false;
    SSL_CTX_set_cert_verify_callback(context, judge, owned.release());
    SSL_CTX_set_verify(context, SSL_VERIFY_PEER, nullptr);
    SSL_CTX_set_session_cache_mode(context, SSL_SESS_CACHE_OFF);
    SSL_CTX_set_options(context, SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_TICKET);
    SSL_CTX_set_info_callback(context, noteCloseNotify);
    return SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) == 1;
}

bool peerClosedCleanly(void* ssl) {
    return ssl != nullptr && SSL_get_ex_data(static_cast<SSL*>(ssl), closeNotifyIndex()) != nullptr;
}

bool agreedOnHTTP2(void* ssl) {
    if (ssl == nullptr) return false;
    const unsigned char* name = nullptr;
    unsigned size = 0;
    SSL_get0_alpn_selected(static_cast<SSL*>(ssl), &name, &size);
    return std::string_view(reinterpret_cast<const char*>(name), size) == "h2";
}

}  // namespace torvel
