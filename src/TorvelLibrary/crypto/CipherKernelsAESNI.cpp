#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelLibrary/crypto/CipherKernelsX86.h"
#include "TorvelLibrary/crypto/CipherNarrowX86.h"

// AES instructions with SSSE3 base64.
namespace torvel {
namespace {

// --- Blocks

// `count` independent blocks through the rounds side by side, which hides the instructions' latency.
template <int count>
void encryptSideBySide(RoundKeys keys, __m128i* state) {
    for (int b = 0; b < count; ++b) state[b] = _mm_xor_si128(state[b], keys.key[0]);
    for (unsigned round = 1; round < keys.rounds; ++round)
        for (int b = 0; b < count; ++b) state[b] = _mm_aesenc_si128(state[b], keys.key[round]);
    for (int b = 0; b < count; ++b) state[b] = _mm_aesenclast_si128(state[b], keys.key[keys.rounds]);
}

template <int count>
void encryptGroup(RoundKeys keys, const std::uint8_t* in, std::uint8_t* out) {
    __m128i state[count];
    for (int b = 0; b < count; ++b) state[b] = load(in + 16 * b);
    encryptSideBySide<count>(keys, state);
    for (int b = 0; b < count; ++b) store(out + 16 * b, state[b]);
}

template <unsigned rounds>
void cbcDecryptRounds(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                      std::uint8_t* out, std::size_t blocks) {
    const DecryptingKeys<__m128i, rounds> keys(schedule);
    Decryptor<rounds> decryptor(keys, load(iv));
    __m128i group[8];
    for (; blocks >= 8; blocks -= 8, in += 128, out += 128) {
        for (unsigned i = 0; i < 8; ++i) group[i] = load(in + 16 * i);
        decryptor.template decrypt<8>(group, out);
    }
    for (; blocks > 0; --blocks, in += 16, out += 16) {
        group[0] = load(in);
        decryptor.template decrypt<1>(group, out);
    }
}

}  // namespace

namespace aesni {

void expandKey(AESKey key, AESKeySchedule& schedule) { expandAESKey(key, schedule); }

void encryptBlocks(const AESKeySchedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                   std::size_t blocks) {
    const RoundKeys keys = encryptingKeys(schedule);
    for (; blocks >= 8; blocks -= 8, in += 128, out += 128) encryptGroup<8>(keys, in, out);
    for (; blocks > 0; --blocks, in += 16, out += 16) encryptGroup<1>(keys, in, out);
}

void cbcEncrypt(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
    if (blocks == 0) return;
    EncryptingChain chain(encryptingKeys(schedule), iv, load(in));
    for (std::size_t i = 1; i < blocks; ++i, out += 16) store(out, chain.step(load(in + 16 * i)));
    store(out, chain.step(_mm_setzero_si128()));
}

void cbcDecrypt(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
    if (schedule.rounds == 10) return cbcDecryptRounds<10>(schedule, iv, in, out, blocks);
    if (schedule.rounds == 12) return cbcDecryptRounds<12>(schedule, iv, in, out, blocks);
    return cbcDecryptRounds<14>(schedule, iv, in, out, blocks);
}

}  // namespace aesni

namespace {

void encryptToBase64(AESKey key, const std::uint8_t* iv, const std::uint8_t* in, std::size_t size,
                     char* out) {
    encryptToBase64By(encode48, key, iv, in, size, out);
}

}  // namespace

constinit const CipherKernels aesniCipherKernels = {
    "aesni",
    aesni::expandKey,
    aesni::encryptBlocks,
    aesni::cbcEncrypt,
    aesni::cbcDecrypt,
    encryptToBase64,
    decryptFromBase64By<NarrowDecoder>,
};

}  // namespace torvel
