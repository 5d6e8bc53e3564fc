#include "TorvelLibrary/crypto/CipherKernelsX86.h"

#include <array>

#include <cpuid.h>

namespace torvel {
namespace {

// Which vector registers the system saves for its processes (XCR0); the processor alone does not tell.
std::uint32_t savedRegisters() {
    std::uint32_t low = 0, high = 0;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return low;
}

struct CPUFeatures {
    bool aesni = false, avx2 = false, vaes = false;

    CPUFeatures() {
        unsigned a = 0, b = 0, c = 0, d = 0;
        if (__get_cpuid(1, &a, &b, &c, &d) == 0) return;
        aesni = has(c, bit_AES | bit_SSSE3 | bit_SSE4_1);
        if (!aesni || !has(c, bit_OSXSAVE) || __get_cpuid_count(7, 0, &a, &b, &c, &d) == 0) return;
        constexpr std::uint32_t avxState = 0x06,
                                avx512State = 0xE6;  // XMM, YMM; opmask and both halves of ZMM
        avx2 = has(savedRegisters(), avxState) && has(b, bit_AVX2);
        vaes = has(savedRegisters(), avx512State) && has(b, bit_AVX512F | bit_AVX512BW | bit_AVX512VL) &&
               has(c, bit_AVX512VBMI | bit_VAES);
    }

    static bool has(std::uint32_t bits, std::uint32_t wanted) { return (bits & wanted) == wanted; }
};

using Tiers = std::array<const CipherKernels*, 5>;

Tiers supportedTiers() {
    const CPUFeatures features;
    Tiers tiers{};
    std::size_t count = 0;
    if (features.vaes) tiers[count++] = &vaesCipherKernels;
    if (features.avx2) tiers[count++] = &avx2CipherKernels;
    if (features.aesni) tiers[count++] = &aesniCipherKernels;
    tiers[count] = &portableCipherKernels;
    return tiers;
}

}  // namespace

const CipherKernels* const* supportedCipherKernels() {
    static const Tiers tiers = supportedTiers();
    return tiers.data();
}

const CipherKernels& cipherKernels() { return **supportedCipherKernels(); }

}  // namespace torvel
