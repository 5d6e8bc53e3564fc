#pragma once  // internal

#include "TorvelLibrary/crypto/CipherKernels.h"

namespace torvel {

extern const CipherKernels aesniCipherKernels;  // AES, SSSE3, SSE4.1
extern const CipherKernels avx2CipherKernels;   // and AVX2
extern const CipherKernels vaesCipherKernels;   // and VAES, AVX-512 F, BW, VL and VBMI

// Those of the AES-NI tier, for tiers above it.
namespace aesni {

void expandKey(AESKey key, AESKeySchedule& schedule);
void encryptBlocks(const AESKeySchedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                   std::size_t blocks);
void cbcEncrypt(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks);
void cbcDecrypt(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks);

}  // namespace aesni
}  // namespace torvel
