#pragma once  // internal

#include "TorvelLibrary/crypto/CipherKernels.h"

#include <immintrin.h>
#include <string.h>

// Key schedules for the tiers with AES instructions. All of it stands in an unnamed namespace, so that each
// tier compiles its own for its own processors.
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

inline void put(__m128i key, __m128i& place) { place = key; }
#ifdef __AVX512F__
inline void put(__m128i key, __m512i& place) { place = _mm512_broadcast_i32x4(key); }
#endif

// The keys of the equivalent inverse cipher (FIPS-197 5.3.5) in the order in which it takes them: reversed,
// InvMixColumns on the inner ones. Each stands in every block of a register. Wiped when they go.
template <class Register, unsigned rounds>
struct DecryptingKeys {
    Register key[rounds + 1];

    explicit DecryptingKeys(const AESKeySchedule& schedule) {
        const __m128i* const keys = encryptingKeys(schedule).key;
        put(keys[rounds], key[0]);
        for (unsigned i = 1; i < rounds; ++i) put(_mm_aesimc_si128(keys[rounds - i]), key[i]);
        put(keys[0], key[rounds]);
    }
    ~DecryptingKeys() { wipe(key, rounds + 1); }
    DecryptingKeys(const DecryptingKeys&) = delete;
    DecryptingKeys& operator=(const DecryptingKeys&) = delete;
};

}  // namespace
}  // namespace torvel
