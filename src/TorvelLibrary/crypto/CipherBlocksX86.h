#pragma once  // internal

#include "TorvelLibrary/crypto/CipherKernels.h"

#include <immintrin.h>
#include <string.h>

// What the tiers with AES instructions share. All of it stands in an unnamed namespace, so that each tier
// compiles its own for its own processors.
namespace torvel {
namespace {

inline __m128i load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
inline void store(void* to, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }

// Zeros over what was secret, which the compiler may neither leave out nor turn into a string instruction or
// a call: either takes as long as half a block.
template <class Register>
inline void wipe(Register* registers, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        registers[i] = Register{};
        asm volatile("" : : "m"(registers[i]));
    }
}

// --- Key schedule (FIPS-197 5.2)

inline std::uint32_t substitutedWord(std::uint32_t word) {
    const __m128i state = _mm_set1_epi32(static_cast<int>(word));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_aeskeygenassist_si128(state, 0)));
}

// Word by word (little-endian, so that RotWord turns right).
inline void expandAnyKey(AESKey key, AESKeySchedule& schedule) {
    std::uint32_t words[60];
    memcpy(words, key.bytes, 4 * key.words);
    std::uint32_t constant = 1;
    for (unsigned i = key.words; i < 4 * (schedule.rounds + 1); ++i) {
        std::uint32_t word = words[i - 1];
        if (i % key.words == 0) {
            word = substitutedWord(word >> 8 | word << 24) ^ constant;
            constant = (constant << 1 ^ (constant >> 7) * 0x11B) & 0xFF;
        } else if (key.words == 8 && i % key.words == 4) {
            word = substitutedWord(word);
        }
        words[i] = words[i - key.words] ^ word;
    }
    memcpy(schedule.roundKeys, words, 16 * (schedule.rounds + 1));
    wipe(words, 4 * (schedule.rounds + 1));
}

template <int constant>
inline __m128i nextKey128(__m128i key, std::uint8_t* out) {
    const __m128i word = _mm_shuffle_epi32(_mm_aeskeygenassist_si128(key, constant), 0xFF);
    key = _mm_xor_si128(key, _mm_slli_si128(key, 4));
    key = _mm_xor_si128(key, _mm_slli_si128(key, 8));
    key = _mm_xor_si128(key, word);
    store(out, key);
    return key;
}

inline void expandKey128(const std::uint8_t* key, AESKeySchedule& schedule) {
    std::uint8_t* const out = schedule.roundKeys;
    __m128i last = load(key);
    store(out, last);
    last = nextKey128<0x01>(last, out + 16);
    last = nextKey128<0x02>(last, out + 32);
    last = nextKey128<0x04>(last, out + 48);
    last = nextKey128<0x08>(last, out + 64);
    last = nextKey128<0x10>(last, out + 80);
    last = nextKey128<0x20>(last, out + 96);
    last = nextKey128<0x40>(last, out + 112);
    last = nextKey128<0x80>(last, out + 128);
    last = nextKey128<0x1B>(last, out + 144);
    nextKey128<0x36>(last, out + 160);
}

inline void expandAESKey(AESKey key, AESKeySchedule& schedule) {
    schedule.rounds = key.words + 6;
    if (key.words == 4)
        expandKey128(key.bytes, schedule);
    else
        expandAnyKey(key, schedule);
}

// Round keys in the order in which a direction takes them.
struct RoundKeys {
    const __m128i* key;
    unsigned rounds;
};

inline RoundKeys encryptingKeys(const AESKeySchedule& schedule) {
    return {reinterpret_cast<const __m128i*>(schedule.roundKeys), schedule.rounds};
}

// A schedule that is wiped when it goes.
class ExpandedKey {
  public:
    explicit ExpandedKey(AESKey key) { expandAESKey(key, m_schedule); }
    ~ExpandedKey() { wipe(reinterpret_cast<__m128i*>(m_schedule.roundKeys), m_schedule.rounds + 1); }
    ExpandedKey(const ExpandedKey&) = delete;
    ExpandedKey& operator=(const ExpandedKey&) = delete;

    const AESKeySchedule& schedule() const { return m_schedule; }

  private:
    AESKeySchedule m_schedule;
};

// --- CBC encryption

// Between blocks the chain already holds the next plain block and the first round key: they go in through the
// last round key of the block before, which keeps their XORs out of the chain of dependent instructions.
class EncryptingChain {
  public:
    EncryptingChain(RoundKeys keys, const std::uint8_t* iv, __m128i firstBlock)
        : m_keys(keys), m_state(_mm_xor_si128(load(iv), _mm_xor_si128(firstBlock, keys.key[0]))) {}

    // Finishes the current block and takes in the one after it.
    __m128i step(__m128i nextBlock) {
        const __m128i next = _mm_xor_si128(nextBlock, m_keys.key[0]);
        const __m128i lastKey = _mm_xor_si128(m_keys.key[m_keys.rounds], next);
        for (unsigned round = 1; round < m_keys.rounds; ++round)
            m_state = _mm_aesenc_si128(m_state, m_keys.key[round]);
        m_state = _mm_aesenclast_si128(m_state, lastKey);
        return _mm_xor_si128(m_state, next);
    }

  private:
    RoundKeys m_keys;
    __m128i m_state;
};

// Plain text as blocks, the last one filled up with PKCS#7 padding (RFC 5652 6.3). Wiped when it goes.
class PaddedBlocks {
  public:
    PaddedBlocks(const std::uint8_t* bytes, std::size_t size) : m_bytes(bytes), m_whole(size / 16) {
        const std::size_t rest = size % 16;
        m_last = _mm_set1_epi8(static_cast<char>(16 - rest));
        if (rest > 0) memcpy(&m_last, bytes + 16 * m_whole, rest);
    }
    ~PaddedBlocks() { wipe(&m_last, 1); }
    PaddedBlocks(const PaddedBlocks&) = delete;
    PaddedBlocks& operator=(const PaddedBlocks&) = delete;

    std::size_t whole() const { return m_whole; }
    std::size_t count() const { return m_whole + 1; }
    __m128i wholeBlock(std::size_t i) const { return load(m_bytes + 16 * i); }
    // Past the end there are zeros, which the chain may take in after its last block.
    __m128i operator[](std::size_t i) const {
        if (i < m_whole) return wholeBlock(i);
        return i == m_whole ? m_last : _mm_setzero_si128();
    }

  private:
    const std::uint8_t* m_bytes;
    std::size_t m_whole;
    __m128i m_last;
};

// Encrypts a whole message; encode48(three blocks, 64 characters) is the tier's base64. The chain waits for
// each block's AES, so that the base64 of finished blocks costs nothing beside it. The number of rounds is
// known, so that the rounds start while their keys are still being made.
template <unsigned rounds, class Encode48>
inline void encryptToBase64By(Encode48 encode48, const std::uint8_t* key, const std::uint8_t* iv,
                              const std::uint8_t* in, std::size_t size, char* out) {
    const ExpandedKey expanded({key, rounds - 6});
    const PaddedBlocks plain(in, size);
    EncryptingChain chain({encryptingKeys(expanded.schedule()).key, rounds}, iv, plain[0]);
    __m128i group[3];
    std::size_t i = 0;
    for (; i + 4 <= plain.whole(); i += 3, out += 64) {
        for (unsigned b = 0; b < 3; ++b) group[b] = chain.step(plain.wholeBlock(i + b + 1));
        encode48(group, out);
    }
    for (std::size_t left = plain.count() - i; left > 0; out += 64) {
        const std::size_t count = left < 3 ? left : 3;
        for (unsigned b = 0; b < 3; ++b) group[b] = b < count ? chain.step(plain[++i]) : _mm_setzero_si128();
        encode48(group, out);
        if (count == 1) memcpy(out + 22, "==", 2);
        if (count == 2) out[43] = '=';
        left -= count;
    }
}

template <class Encode48>
inline void encryptToBase64By(Encode48 encode48, AESKey key, const std::uint8_t* iv, const std::uint8_t* in,
                              std::size_t size, char* out) {
    if (key.words == 4) return encryptToBase64By<10>(encode48, key.bytes, iv, in, size, out);
    if (key.words == 6) return encryptToBase64By<12>(encode48, key.bytes, iv, in, size, out);
    return encryptToBase64By<14>(encode48, key.bytes, iv, in, size, out);
}

}  // namespace
}  // namespace torvel
