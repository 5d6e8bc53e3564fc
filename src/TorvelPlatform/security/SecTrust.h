#pragma once

#include "TorvelPlatform/security/SecCertificate.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace torvel {

// What a trust must satisfy.
struct SecPolicy {
    // Which of the two policies below.
    enum class Kind { basicX509, sslServer };

    // Chain and dates, no host name.
    static SecPolicy createBasicX509() { return {Kind::basicX509, {}}; }
    // Chain, dates, TLS-server purpose and strength; with a host also its name (RFC 6125: DNS names and IP
    // addresses of the subject alternative names, never the common name).
    static SecPolicy createSSL(std::string host = {}) { return {Kind::sslServer, std::move(host)}; }

    Kind kind;         // which policy
    std::string host;  // whose name to demand; empty for any
};

// Why a trust does not hold.
struct SecTrustError {
    // Whether the chain failed, or only the host's name.
    enum class Kind { chain, host };
    Kind kind;
    int code;                 // the crypto library's verification code
    int depth;                // 0 is the server's own certificate
    std::string description;  // a sentence
};

// A server's certificates on trial. Not shared between threads.
class SecTrust {
  public:
    // Over one or more certificates, the server's own first. Absent when there is none.
    static std::optional<SecTrust> createWithCertificates(std::vector<SecCertificate> certificates,
                                                          SecPolicy policy);

    // Judges against the system's trust store (SSL_CERT_FILE and SSL_CERT_DIR honoured) or, when given, the
    // anchors set by setAnchors. Absent means trusted. A policy other than the trust's own may be given.
    std::optional<SecTrustError> evaluate();
    std::optional<SecTrustError> evaluate(const SecPolicy& policy);

    // Only these are trusted roots from now on.
    void setAnchors(std::vector<SecCertificate> anchors);

    // The verified chain, leaf to root, after a successful evaluate(); before it, the certificates as given.
    const std::vector<SecCertificate>& certificateChain() const;

    // The first certificate's key; nothing is evaluated. Absent when the key cannot be used.
    std::optional<SecKey> copyPublicKey() const;

  private:
    struct State;
    explicit SecTrust(std::shared_ptr<State> state) : m_state(std::move(state)) {}
    std::shared_ptr<State> m_state;
};

}  // namespace torvel
