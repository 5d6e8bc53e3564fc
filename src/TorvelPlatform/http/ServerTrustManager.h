#pragma once

#include "TorvelPlatform/security/SecCertificate.h"
#include "TorvelPlatform/security/SecKey.h"
#include "TorvelPlatform/security/SecTrust.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// Why a server was refused.
struct TrustFailure {
    // What was missing or did not hold.
    enum class Reason {
        noRequiredEvaluator,
        noCertificatesFound,
        noPublicKeysFound,
        chainValidationFailed,
        hostValidationFailed,
        certificatePinningFailed,
        publicKeyPinningFailed,
    };
    Reason reason;            // what did not hold
    std::string host;         // who was refused
    std::string description;  // a sentence for a log or a developer
};

// Judges the trust of one server. Implementations are immutable: they are called from session threads.
class ServerTrustEvaluating {
  public:
    virtual ~ServerTrustEvaluating() = default;
    // Absent means trusted.
    virtual std::optional<TrustFailure> evaluate(SecTrust& trust, std::string_view forHost) const = 0;
};

// Accepts every server. For hosts that are deliberately not judged.
class DisabledEvaluator final : public ServerTrustEvaluating {
  public:
    std::optional<TrustFailure> evaluate(SecTrust& trust, std::string_view forHost) const override;
};

// Chain, dates, purpose and strength against the system's trust store, then the host name.
class DefaultTrustEvaluator final : public ServerTrustEvaluating {
  public:
    // Judges the host's name only when asked to.
    explicit DefaultTrustEvaluator(bool validateHost = true) : m_validateHost(validateHost) {}
    std::optional<TrustFailure> evaluate(SecTrust& trust, std::string_view forHost) const override;

  private:
    bool m_validateHost;
};

// The default evaluation (chain and dates if either of the two flags is set, the name for validateHost),
// then: some certificate of the verified chain is one of the pins.
class PinnedCertificatesTrustEvaluator final : public ServerTrustEvaluating {
  public:
    // `certificates`: the pins, of which any suffices.
    explicit PinnedCertificatesTrustEvaluator(std::vector<SecCertificate> certificates,
                                              bool acceptSelfSignedCertificates = false,
                                              bool performDefaultValidation = true, bool validateHost = true);
    std::optional<TrustFailure> evaluate(SecTrust& trust, std::string_view forHost) const override;

  private:
    std::vector<SecCertificate> m_certificates;
    bool m_acceptSelfSignedCertificates;
    bool m_performDefaultValidation;
    bool m_validateHost;
};

// The default evaluation, then: the key of some certificate of the verified chain is one of the pins.
class PublicKeysTrustEvaluator final : public ServerTrustEvaluating {
  public:
    // `keys`: the pins, of which any suffices.
    explicit PublicKeysTrustEvaluator(std::vector<SecKey> keys, bool performDefaultValidation = true,
                                      bool validateHost = true);
    std::optional<TrustFailure> evaluate(SecTrust& trust, std::string_view forHost) const override;

  private:
    std::vector<SecKey> m_keys;
    bool m_performDefaultValidation;
    bool m_validateHost;
};

// A table of evaluators by host. Immutable once made; hosts are looked up without port, in lower case and
// without a trailing dot.
class ServerTrustManager {
  public:
    // Evaluators by host.
    using Evaluators = std::map<std::string, std::shared_ptr<const ServerTrustEvaluating>, std::less<>>;

    // The table; a host that is not in it is refused when all must be evaluated.
    ServerTrustManager(bool allHostsMustBeEvaluated, Evaluators evaluators);

    // As given.
    bool allHostsMustBeEvaluated() const { return m_allHostsMustBeEvaluated; }
    // As given.
    const Evaluators& evaluators() const { return m_evaluators; }

    // The host's evaluator, or nullptr when it has none.
    const ServerTrustEvaluating* evaluator(std::string_view forHost) const;

  private:
    bool m_allHostsMustBeEvaluated;
    Evaluators m_evaluators;
};

}  // namespace torvel
