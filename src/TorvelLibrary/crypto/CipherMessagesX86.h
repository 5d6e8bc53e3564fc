#pragma once  // internal

#include "TorvelLibrary/crypto/CipherKeysX86.h"

// Whole messages, for the tiers with AES instructions: each brings its own base64. In an unnamed namespace,
// so that each tier compiles its own for its own processors.
namespace torvel {
namespace {

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
// each block's AES, so that base64 costs nothing beside it, if it comes second: three blocks are encoded when
// the one behind them is on its way, because the processor serves older instructions first. The number of
// rounds is known, so that the rounds start while their keys are still being made.
template <unsigned rounds, class Encode48>
inline void encryptToBase64By(Encode48 encode48, const std::uint8_t* key, const std::uint8_t* iv,
                              const std::uint8_t* in, std::size_t size, char* out) {
    const ExpandedKey expanded({key, rounds - 6});
    const PaddedBlocks plain(in, size);
    EncryptingChain chain({encryptingKeys(expanded.schedule()).key, rounds}, iv, plain[0]);
    __m128i group[3] = {};
    std::size_t i = 0, left = plain.count();
    for (; left > 4; left -= 3) {
        const __m128i next = chain.step(plain.wholeBlock(++i));
        if (i > 1) encode48(group, out), out += 64;
        group[0] = next;
        group[1] = chain.step(plain.wholeBlock(++i));
        group[2] = chain.step(plain.wholeBlock(++i));
    }
    if (i > 0) encode48(group, out), out += 64;
    for (; left > 0; out += 64) {
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

// --- CBC decryption

// Six vectors of blocks at a time while there are six. The text of the next six is decoded between the rounds
// of these: behind them it would wait for a place among the instructions that the processor looks at.
// `decoder` takes one vector of text a step, and completes three vectors of blocks with every four;
// `decryptor` does something beside every round but the last. Inlined, so that both stay in registers.
template <class Vector, class Decryptor, class Decoder>
[[gnu::always_inline]] inline void decryptMany(Decryptor& decryptor, Decoder& decoder, const char*& text,
                                               std::uint8_t*& out, std::size_t& blocks) {
    constexpr std::size_t bytes = 6 * sizeof(Vector), characters = 8 * sizeof(Vector), many = bytes / 16;
    if (blocks < many) return;
    Vector one[6], other[6];
    const auto decryptAndDecode = [&](const Vector* current, Vector* next) __attribute__((always_inline)) {
        text += characters;
        decryptor.template decrypt<6>(current, out, [&](unsigned round) {
            if (round <= 8) decoder.step(round - 1, text, next);
        });
        blocks -= many, out += bytes;
    };
    decoder.template decode<8>(text, one);
    while (blocks >= 3 * many) {
        decryptAndDecode(one, other);
        decryptAndDecode(other, one);
    }
    if (blocks >= 2 * many) {
        decryptAndDecode(one, other);
        decryptor.template decrypt<6>(other, out);
    } else {
        decryptor.template decrypt<6>(one, out);
    }
    blocks -= many, text += characters, out += bytes;
}

}  // namespace
}  // namespace torvel
