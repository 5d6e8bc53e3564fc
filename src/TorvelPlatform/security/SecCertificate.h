#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/security/SecKey.h"

#include <memory>
#include <optional>
#include <string>

namespace torvel {

// An X.509 certificate. Immutable, cheap to copy, safe from any thread.
class SecCertificate {
  public:
    // From DER bytes; absent when they are not exactly one certificate.
    static std::optional<SecCertificate> createWithData(const Data& der);

    // The DER encoding.
    const Data& data() const;
    // Absent when the key is of a kind that cannot be used here.
    std::optional<SecKey> copyKey() const;
    // The subject on one line, for messages.
    std::string subjectSummary() const;

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
