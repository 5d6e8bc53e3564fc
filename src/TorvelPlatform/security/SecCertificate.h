#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/security/SecKey.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace torvel {

// An X.509 certificate. Immutable, cheap to copy, safe from any thread.
class SecCertificate {
  public:
    // From DER bytes; absent when they are not exactly one certificate.
    static std::optional<SecCertificate> createWithData(const Data& der);

    // The certificates of a PEM text (RFC 7468), in its order; what stands between them is left out.
    static std::vector<SecCertificate> createWithPEM(const Data& text);

    // The DER encoding.
    const Data& data() const;
    // Absent when the key is of a kind that cannot be used here.
    std::optional<SecKey> copyKey() const;
    // The subject on one line, for messages.
    std::string subjectSummary() const;
    // The DNS names and IP addresses of the subject alternative names (RFC 5280, 4.2.1.6), in their order.
    std::vector<std::string> subjectAlternativeNames() const;
    // The last second in which it is valid; absent when the certificate's date is none.
    std::optional<std::chrono::sys_seconds> notAfter() const;

    // Same DER encoding.
    bool operator==(const SecCertificate& other) const { return data() == other.data(); }

    struct Native;  // the crypto library's object, for the security room alone
    explicit SecCertificate(std::shared_ptr<const Native> native) : m_native(std::move(native)) {}
    // The crypto library's object, for the security room alone.
    const Native& native() const { return *m_native; }

  private:
    std::shared_ptr<const Native> m_native;
};

}  // namespace torvel
