#include "TorvelPlatform/security/Digest.h"

#include <array>

#include <openssl/sha.h>

namespace torvel {

Data sha256(const Data& bytes) {
    std::array<std::uint8_t, SHA256_DIGEST_LENGTH> digest{};
    SHA256(bytes.bytes().data(), bytes.size(), digest.data());
    return Data(digest);
}

}  // namespace torvel
