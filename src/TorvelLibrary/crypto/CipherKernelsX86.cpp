#include "TorvelLibrary/crypto/CipherKernelsX86.h"

#include <array>

#include <cpuid.h>

namespace torvel {
namespace {

struct CPUFeatures {
    bool aesni = false;

    CPUFeatures() {
        unsigned a = 0, b = 0, c = 0, d = 0;
        if (__get_cpuid(1, &a, &b, &c, &d) == 0) return;
        aesni = (c & bit_AES) != 0 && (c & bit_SSSE3) != 0 && (c & bit_SSE4_1) != 0;
    }
};

using Tiers = std::array<const CipherKernels*, 3>;

Tiers supportedTiers() {
    const CPUFeatures features;
    Tiers tiers{};
    std::size_t count = 0;
    if (features.aesni) tiers[count++] = &aesniCipherKernels;
    tiers[count] = &portableCipherKernels;
    return tiers;
}

}  // namespace

const CipherKernels* const* supportedCipherKernels() {
    static const Tiers tiers = supportedTiers();
    return tiers.data();
}

}  // namespace torvel
