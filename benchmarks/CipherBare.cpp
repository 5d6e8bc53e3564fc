#include "CipherPeer.h"

#include <cpuid.h>
#include <immintrin.h>

// Each function names the instructions that it needs; the program asks for them first.
#define NEEDS_AES __attribute__((target("aes,sse4.1")))
#define NEEDS_VAES __attribute__((target("aes,vaes,avx512f,avx512bw")))

namespace torvel::bench::bare {
namespace {

NEEDS_AES __m128i load(const std::uint8_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}
NEEDS_AES void store(std::uint8_t* to, __m128i value) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to), value);
}

template <int constant>
NEEDS_AES __m128i nextKey(__m128i key) {
    const __m128i word = _mm_shuffle_epi32(_mm_aeskeygenassist_si128(key, constant), 0xFF);
    key = _mm_xor_si128(key, _mm_slli_si128(key, 4));
    key = _mm_xor_si128(key, _mm_slli_si128(key, 8));
    return _mm_xor_si128(key, word);
}

NEEDS_AES void expand(const std::uint8_t* key, __m128i* keys) {
    keys[0] = load(key);
    keys[1] = nextKey<0x01>(keys[0]);
    keys[2] = nextKey<0x02>(keys[1]);
    keys[3] = nextKey<0x04>(keys[2]);
    keys[4] = nextKey<0x08>(keys[3]);
    keys[5] = nextKey<0x10>(keys[4]);
    keys[6] = nextKey<0x20>(keys[5]);
    keys[7] = nextKey<0x40>(keys[6]);
    keys[8] = nextKey<0x80>(keys[7]);
    keys[9] = nextKey<0x1B>(keys[8]);
    keys[10] = nextKey<0x36>(keys[9]);
}

NEEDS_AES void expandInverse(const std::uint8_t* key, __m128i* keys) {
    __m128i forward[11];
    expand(key, forward);
    keys[0] = forward[10], keys[10] = forward[0];
    for (int i = 1; i < 10; ++i) keys[i] = _mm_aesimc_si128(forward[10 - i]);
}

template <int count>
NEEDS_AES __m128i decryptGroup(const __m128i* keys, __m128i before, const std::uint8_t* in,
                               std::uint8_t* out) {
    __m128i cipher[count], state[count];
    for (int b = 0; b < count; ++b)
        cipher[b] = load(in + 16 * b), state[b] = _mm_xor_si128(cipher[b], keys[0]);
    for (int round = 1; round < 10; ++round)
        for (int b = 0; b < count; ++b) state[b] = _mm_aesdec_si128(state[b], keys[round]);
    for (int b = 0; b < count; ++b) {
        const __m128i last = _mm_xor_si128(keys[10], b == 0 ? before : cipher[b - 1]);
        store(out + 16 * b, _mm_aesdeclast_si128(state[b], last));
    }
    return cipher[count - 1];
}

}  // namespace

bool hasAES() { return __builtin_cpu_supports("aes") && __builtin_cpu_supports("sse4.1"); }
bool hasVAES() { return hasAES() && __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("vaes"); }

NEEDS_AES void encrypt(const std::uint8_t* key, const std::uint8_t* iv, const std::uint8_t* in,
                       std::uint8_t* out, std::size_t blocks) {
    __m128i keys[11];
    expand(key, keys);
    const __m128i seam = _mm_xor_si128(keys[10], keys[0]);
    __m128i state = _mm_xor_si128(load(iv), _mm_xor_si128(keys[0], load(in)));
    for (std::size_t i = 0; i < blocks; ++i) {
        // The next block and the first round key enter through the last round key of this one.
        const __m128i next = i + 1 < blocks ? load(in + 16 * (i + 1)) : _mm_setzero_si128();
        for (int round = 1; round < 10; ++round) state = _mm_aesenc_si128(state, keys[round]);
        state = _mm_aesenclast_si128(state, _mm_xor_si128(seam, next));
        store(out + 16 * i, _mm_xor_si128(state, _mm_xor_si128(next, keys[0])));
    }
}

NEEDS_AES void decrypt128(const std::uint8_t* key, const std::uint8_t* iv, const std::uint8_t* in,
                          std::uint8_t* out, std::size_t blocks) {
    __m128i keys[11], before = load(iv);
    expandInverse(key, keys);
    for (; blocks >= 8; blocks -= 8, in += 128, out += 128) before = decryptGroup<8>(keys, before, in, out);
    for (; blocks > 0; --blocks, in += 16, out += 16) before = decryptGroup<1>(keys, before, in, out);
}

NEEDS_VAES void decrypt512(const std::uint8_t* key, const std::uint8_t* iv, const std::uint8_t* in,
                           std::uint8_t* out, std::size_t blocks) {
    __m128i narrow[11];
    expandInverse(key, narrow);
    __m512i keys[11], before = _mm512_broadcast_i32x4(load(iv));
    for (int i = 0; i < 11; ++i) keys[i] = _mm512_broadcast_i32x4(narrow[i]);
    for (; blocks >= 24; blocks -= 24, in += 384, out += 384) {
        __m512i state[6], last[6];
        for (int i = 0; i < 6; ++i) {
            const __m512i cipher = _mm512_loadu_si512(in + 64 * i);
            last[i] = _mm512_xor_si512(keys[10], _mm512_alignr_epi64(cipher, before, 6));
            state[i] = _mm512_xor_si512(cipher, keys[0]);
            before = cipher;
        }
        for (int round = 1; round < 10; ++round)
            for (int i = 0; i < 6; ++i) state[i] = _mm512_aesdec_epi128(state[i], keys[round]);
        for (int i = 0; i < 6; ++i)
            _mm512_storeu_si512(out + 64 * i, _mm512_aesdeclast_epi128(state[i], last[i]));
    }
    __m128i last = _mm512_extracti32x4_epi32(before, 3);
    for (; blocks >= 8; blocks -= 8, in += 128, out += 128) last = decryptGroup<8>(narrow, last, in, out);
    for (; blocks > 0; --blocks, in += 16, out += 16) last = decryptGroup<1>(narrow, last, in, out);
}

}  // namespace torvel::bench::bare
