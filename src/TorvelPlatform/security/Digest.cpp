#include "TorvelPlatform/security/Digest.h"

#include "TorvelPlatform/security/OpenSSL.h"

#include <array>

namespace torvel {

Data sha256(const Data& bytes) {
    loadOpenSSL();
    std::array<std::uint8_t, SHA256_DIGEST_LENGTH> digest{};
    SHA256(bytes.bytes().data(), bytes.size(), digest.data());
    return Data(digest);
}

}  // namespace torvel
