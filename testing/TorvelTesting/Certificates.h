#pragma once

#include "TorvelPlatform/foundation/Data.h"

#include <memory>
#include <string>
#include <vector>

namespace torvel::testing {

// A certificate with its private key, made at test time so that none ever expires in the repository.
struct Identity {
    std::string certificatePem;
    std::string privateKeyPem;
    std::string publicKeyPem;
    Data der;
};

struct CertificateRequest {
    std::string commonName = "torvel test";
    std::string alternativeNames = {};  // as OpenSSL's configuration has them: "DNS:localhost,IP:127.0.0.1"
    int firstDay = -1;                  // relative to today
    int lastDay = 30;
    bool isAuthority = false;
    std::string extendedKeyUsage = "serverAuth";
    std::string digest = "SHA256";
    int rsaBits = 0;                  // 0: a P-256 key
    const Identity* keyOf = nullptr;  // use this identity's key again
};

// Signed by `issuer`, or by itself.
Identity issue(const CertificateRequest& request, const Identity* issuer = nullptr);

// The plain text of one block, by the crypto library's own private-key operation.
std::string rsaDecrypted(const Identity& identity, std::string_view cipherText);

}  // namespace torvel::testing
