#include "TorvelPlatform/security/SecTrust.h"

#include "TorvelPlatform/security/Native.h"

#include <cstdlib>
#include <filesystem>

namespace torvel {
namespace {

// 112 bits of security: RSA from 2048 bits on, no SHA-1 signatures (NIST SP 800-57).
constexpr int securityLevel = 2;

X509StackPtr stackOf(const std::vector<SecCertificate>& certificates) {
    X509StackPtr stack(sk_X509_new_null());
    for (const SecCertificate& certificate : certificates) {
        X509* const object = certificate.native().certificate.get();
        if (X509_up_ref(object) == 1) sk_X509_push(stack.get(), object);
    }
    return stack;
}

std::vector<SecCertificate> certificatesOf(const STACK_OF(X509) * stack) {
    std::vector<SecCertificate> certificates;
    for (int i = 0; i < sk_X509_num(stack); ++i) {
        X509* const object = sk_X509_value(stack, i);
        if (X509_up_ref(object) != 1) continue;
        if (auto certificate = wrapCertificate(X509Ptr(object)))
            certificates.push_back(std::move(*certificate));
    }
    return certificates;
}

X509StorePtr storeOf(const std::vector<SecCertificate>& anchors) {
    X509StorePtr store(X509_STORE_new());
    for (const SecCertificate& anchor : anchors)
        X509_STORE_add_cert(store.get(), anchor.native().certificate.get());
    return store;
}

bool hasHashLinks(const std::filesystem::path& directory) {
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(directory, error))
        if (entry.path().extension() == ".0") return true;
    return false;
}

// An address must be among the IP addresses, never the names. The common name never counts (RFC 6125,
// 6.4.4), and "f*.example" is no wildcard.
bool nameMatches(X509* certificate, const std::string& host) {
    constexpr int notAnAddress = -2;
    if (const int match = X509_check_ip_asc(certificate, host.c_str(), 0); match != notAnAddress)
        return match == 1;
    constexpr unsigned flags = X509_CHECK_FLAG_NEVER_CHECK_SUBJECT | X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS;
    return X509_check_host(certificate, host.data(), host.size(), flags, nullptr) == 1;
}

X509_STORE* loadSystemTrustStore() {
    X509_STORE* const store = X509_STORE_new();
    const char* const file = std::getenv(X509_get_default_cert_file_env());
    const char* const listed = std::getenv(X509_get_default_cert_dir_env());
    const char* const directory = listed != nullptr ? listed : X509_get_default_cert_dir();
    X509_STORE_load_path(store, directory);
    if (file != nullptr)
        X509_STORE_load_file(store, file);
    else if (listed == nullptr && !hasHashLinks(directory))
        X509_STORE_load_file(store, X509_get_default_cert_file());
    return store;
}

}  // namespace

X509_STORE* systemTrustStore() {
    static X509_STORE* const store = loadSystemTrustStore();  // lives as long as connections may: forever
    return store;
}

struct SecTrust::State {
    std::vector<SecCertificate> certificates;
    SecPolicy policy;
    X509StorePtr anchors;  // nullptr: the system's
    std::vector<SecCertificate> chain;
};

std::optional<SecTrust> SecTrust::createWithCertificates(std::vector<SecCertificate> certificates,
                                                         SecPolicy policy) {
    if (certificates.empty()) return std::nullopt;
    auto state = std::make_shared<State>(State{certificates, std::move(policy), nullptr, certificates});
    return SecTrust(std::move(state));
}

void SecTrust::setAnchors(std::vector<SecCertificate> anchors) { m_state->anchors = storeOf(anchors); }

std::optional<SecTrustError> SecTrust::evaluate() { return evaluate(m_state->policy); }

std::optional<SecTrustError> SecTrust::evaluate(const SecPolicy& policy) {
    X509* const leaf = m_state->certificates.front().native().certificate.get();
    const X509StackPtr untrusted = stackOf(m_state->certificates);
    X509_STORE* const store = m_state->anchors ? m_state->anchors.get() : systemTrustStore();
    const X509StoreContextPtr context(X509_STORE_CTX_new());
    if (!context || X509_STORE_CTX_init(context.get(), store, leaf, untrusted.get()) != 1)
        return SecTrustError{SecTrustError::Kind::chain, X509_V_ERR_OUT_OF_MEM, 0, "out of memory"};

    X509_VERIFY_PARAM_set_auth_level(X509_STORE_CTX_get0_param(context.get()), securityLevel);
    if (policy.kind == SecPolicy::Kind::sslServer) X509_STORE_CTX_set_default(context.get(), "ssl_server");
    if (X509_verify_cert(context.get()) != 1) {
        const int code = X509_STORE_CTX_get_error(context.get());
        return SecTrustError{SecTrustError::Kind::chain, code, X509_STORE_CTX_get_error_depth(context.get()),
                             X509_verify_cert_error_string(code)};
    }
    m_state->chain = certificatesOf(X509_STORE_CTX_get0_chain(context.get()));

    if (!policy.host.empty() && !nameMatches(leaf, policy.host))
        return SecTrustError{SecTrustError::Kind::host, X509_V_ERR_HOSTNAME_MISMATCH, 0,
                             "the certificate is not valid for " + policy.host};
    return std::nullopt;
}

const std::vector<SecCertificate>& SecTrust::certificateChain() const { return m_state->chain; }

std::optional<SecKey> SecTrust::copyPublicKey() const { return m_state->certificates.front().copyKey(); }

}  // namespace torvel
