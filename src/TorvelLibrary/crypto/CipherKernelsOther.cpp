#include "TorvelLibrary/crypto/CipherKernels.h"

namespace torvel {

const CipherKernels* const* supportedCipherKernels() {
    static const CipherKernels* const tiers[] = {&portableCipherKernels, nullptr};
    return tiers;
}

}  // namespace torvel
