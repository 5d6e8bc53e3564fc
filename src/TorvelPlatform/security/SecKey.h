#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace torvel {

// The platform's padding codes.
enum class SecPadding : std::uint32_t { none = 0, PKCS1 = 1 };

// The platform's status code of a failed security operation: never 0.
struct SecStatus {
    std::int32_t code;  // the platform's number
};

// A public key. Immutable, cheap to copy, safe from any thread.
class SecKey {
  public:
    // From a SubjectPublicKeyInfo, as PEM text ("-----BEGIN PUBLIC KEY-----", RFC 7468) or DER bytes;
    // absent when the bytes are neither.
    static std::optional<SecKey> createWithData(const Data& bytes);

    // The size of one encrypted block in bytes: 256 for a 2048-bit RSA key. 0 when it cannot encrypt.
    std::size_t blockSize() const;
    // Encrypts at most blockSize() - 11 bytes by RSAES-PKCS1-v1_5 (RFC 8017, 7.2) into one block.
    Outcome<Data, SecStatus> encrypt(SecPadding padding, std::span<const std::uint8_t> plainText) const;
    // The DER of the SubjectPublicKeyInfo.
    const Data& subjectPublicKeyInfo() const;
    // The same as PEM text, the form that createWithData() and pins take.
    std::string pem() const;
    // The algorithm and the size in bits: "RSA 2048", "EC 256".
    std::string description() const;
    // The strength in bits by NIST SP 800-57, part 1, 5.6.1: 112 for RSA of 2048 bits, 128 for P-256.
    int securityBits() const;

    // Same algorithm and key bits.
    bool operator==(const SecKey& other) const {
        return subjectPublicKeyInfo() == other.subjectPublicKeyInfo();
    }

    struct Native;  // the crypto library's object, for the security room alone
    explicit SecKey(std::shared_ptr<const Native> native) : m_native(std::move(native)) {}

  private:
    std::shared_ptr<const Native> m_native;
};

}  // namespace torvel
