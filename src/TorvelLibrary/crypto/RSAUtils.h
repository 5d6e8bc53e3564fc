#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/security/SecKey.h"

#include <optional>

namespace torvel {

// RSA encryption of bytes of any length, one block a piece. Any thread.
class RSAUtils {
  public:
    // Cuts `data` into pieces of the key's block size less 11 (the room that PKCS#1 v1.5 padding needs,
    // kept whatever padding is passed) and encrypts each into one whole block. No bytes give no bytes.
    // Absent when a piece cannot be encrypted; the status then goes to the system log. A key whose blocks
    // are smaller than 11 bytes stops the process.
    static std::optional<Data> encryptWithRSAKey(const Data& data, const SecKey& rsaKeyRef,
                                                 SecPadding padding);
};

}  // namespace torvel
