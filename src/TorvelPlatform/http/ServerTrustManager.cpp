#include "TorvelPlatform/http/ServerTrustManager.h"

#include <algorithm>

namespace torvel {
namespace {

using Reason = TrustFailure::Reason;

// The key of the table: hosts compare in lower case and without the root's trailing dot.
std::string canonicalHost(std::string_view host) {
    if (!host.empty() && host.back() == '.') host.remove_suffix(1);
    std::string key(host);
    std::transform(key.begin(), key.end(), key.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return key;
}

TrustFailure failure(Reason reason, std::string_view host, std::string_view cause) {
    std::string description = "The server " + std::string(host) + " is not trusted: ";
    return {reason, std::string(host), description.append(cause)};
}

// The chain first, then the name, so that the reason says which of the two failed.
std::optional<TrustFailure> evaluateDefault(SecTrust& trust, std::string_view host, bool validateHost) {
    const auto error =
        trust.evaluate(SecPolicy::createSSL(validateHost ? canonicalHost(host) : std::string()));
    if (!error) return std::nullopt;
    if (error->kind == SecTrustError::Kind::host)
        return failure(Reason::hostValidationFailed, host, error->description + ".");
    return failure(Reason::chainValidationFailed, host,
                   error->description + " (certificate " + std::to_string(error->depth) + " of the chain).");
}

}  // namespace

std::optional<TrustFailure> DisabledEvaluator::evaluate(SecTrust&, std::string_view) const {
    return std::nullopt;
}

std::optional<TrustFailure> DefaultTrustEvaluator::evaluate(SecTrust& trust, std::string_view forHost) const {
    return evaluateDefault(trust, forHost, m_validateHost);
}

PinnedCertificatesTrustEvaluator::PinnedCertificatesTrustEvaluator(std::vector<SecCertificate> certificates,
                                                                   bool acceptSelfSignedCertificates,
                                                                   bool performDefaultValidation,
                                                                   bool validateHost)
    : m_certificates(std::move(certificates)),
      m_acceptSelfSignedCertificates(acceptSelfSignedCertificates),
      m_performDefaultValidation(performDefaultValidation),
      m_validateHost(validateHost) {}

std::optional<TrustFailure> PinnedCertificatesTrustEvaluator::evaluate(SecTrust& trust,
                                                                       std::string_view forHost) const {
    if (m_certificates.empty())
        return failure(Reason::noCertificatesFound, forHost, "no certificate is pinned for it.");
    if (m_acceptSelfSignedCertificates) trust.setAnchors(m_certificates);
    if (m_performDefaultValidation || m_validateHost)
        if (auto refused = evaluateDefault(trust, forHost, m_validateHost)) return refused;

    // Against the verified chain, not what the server sent: it may send pinned certificates that its own
    // chain does not pass through.
    const auto& chain = trust.certificateChain();
    if (std::find_first_of(chain.begin(), chain.end(), m_certificates.begin(), m_certificates.end()) !=
        chain.end())
        return std::nullopt;
    return failure(Reason::certificatePinningFailed, forHost, "no certificate of its chain is pinned.");
}

PublicKeysTrustEvaluator::PublicKeysTrustEvaluator(std::vector<SecKey> keys, bool performDefaultValidation,
                                                   bool validateHost)
    : m_keys(std::move(keys)),
      m_performDefaultValidation(performDefaultValidation),
      m_validateHost(validateHost) {}

std::optional<TrustFailure> PublicKeysTrustEvaluator::evaluate(SecTrust& trust,
                                                               std::string_view forHost) const {
    if (m_keys.empty()) return failure(Reason::noPublicKeysFound, forHost, "no public key is pinned for it.");
    if (m_performDefaultValidation || m_validateHost)
        if (auto refused = evaluateDefault(trust, forHost, m_validateHost)) return refused;

    const auto isPinned = [this](const SecCertificate& certificate) {
        const std::optional<SecKey> key = certificate.copyKey();
        return key && std::find(m_keys.begin(), m_keys.end(), *key) != m_keys.end();
    };
    const auto& chain = trust.certificateChain();
    if (std::any_of(chain.begin(), chain.end(), isPinned)) return std::nullopt;
    return failure(Reason::publicKeyPinningFailed, forHost, "no public key of its chain is pinned.");
}

ServerTrustManager::ServerTrustManager(bool allHostsMustBeEvaluated, Evaluators evaluators)
    : m_allHostsMustBeEvaluated(allHostsMustBeEvaluated) {
    for (auto& [host, evaluator] : evaluators)
        m_evaluators.emplace(canonicalHost(host), std::move(evaluator));
}

const ServerTrustEvaluating* ServerTrustManager::evaluator(std::string_view forHost) const {
    const auto found = m_evaluators.find(canonicalHost(forHost));
    return found == m_evaluators.end() ? nullptr : found->second.get();
}

}  // namespace torvel
