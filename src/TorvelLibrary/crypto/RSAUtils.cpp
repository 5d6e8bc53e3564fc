#include "TorvelLibrary/crypto/RSAUtils.h"

#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/NSLog.h"

#include <algorithm>

namespace torvel {

std::optional<Data> RSAUtils::encryptWithRSAKey(const Data& data, const SecKey& rsaKeyRef,
                                                SecPadding padding) {
    constexpr std::size_t paddingOverhead = 11;
    const std::size_t blockSize = rsaKeyRef.blockSize();
    if (blockSize < paddingOverhead) fatalError("The key's blocks are too small for PKCS#1 padding");
    const std::size_t pieceSize = blockSize - paddingOverhead;

    std::string blocks;
    for (auto rest = data.bytes(); !rest.empty();) {
        const auto piece = rest.first(std::min(pieceSize, rest.size()));
        const auto block = rsaKeyRef.encrypt(padding, piece);
        if (!block) {
            NSLog("Error while ecrypting: " + std::to_string(block.error().code));
            return std::nullopt;
        }
        blocks += block.value().raw();
        rest = rest.subspan(piece.size());
    }
    return Data(std::move(blocks));
}

}  // namespace torvel
