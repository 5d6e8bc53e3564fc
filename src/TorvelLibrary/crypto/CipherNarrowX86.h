#pragma once  // internal

#include "TorvelLibrary/crypto/CipherMessagesX86.h"

// Decryption with registers of one block: what the tiers below 512 bits share. In an unnamed namespace, so
// that each tier compiles its own for its own processors.
namespace torvel {
namespace {

// Chained decryption of runs of blocks.
template <unsigned rounds>
class Decryptor {
  public:
    // The keys stay where they are, so that the rest of it can stay in registers.
    Decryptor(const DecryptingKeys<__m128i, rounds>& keys, __m128i iv) : m_keys(keys.key), m_before(iv) {}

    // Writes the plain blocks. After every round but the last there is time for something else,
    // beside(round).
    template <unsigned count, class Beside>
    [[gnu::always_inline]] inline void decrypt(const __m128i* blocks, std::uint8_t* out, Beside beside) {
        __m128i state[count];
        for (unsigned i = 0; i < count; ++i) state[i] = _mm_xor_si128(blocks[i], m_keys[0]);
        for (unsigned round = 1; round < rounds; ++round) {
            for (unsigned i = 0; i < count; ++i) state[i] = _mm_aesdec_si128(state[i], m_keys[round]);
            beside(round);
        }
        for (unsigned i = 0; i < count; ++i) {
            const __m128i before = i == 0 ? m_before : blocks[i - 1];
            state[i] = _mm_aesdeclast_si128(state[i], _mm_xor_si128(m_keys[rounds], before));
            m_seen = _mm_or_si128(m_seen, state[i]);
            store(out + 16 * i, state[i]);
        }
        m_before = blocks[count - 1];
    }
    template <unsigned count>
    void decrypt(const __m128i* blocks, std::uint8_t* out) {
        decrypt<count>(blocks, out, [](unsigned) {});
    }

    // Of all plain bytes so far.
    bool isASCII() const { return _mm_movemask_epi8(m_seen) == 0; }

  private:
    const __m128i* m_keys;
    __m128i m_before;  // the cipher block before the next one
    __m128i m_seen = _mm_setzero_si128();
};

// --- Base64 (RFC 4648). After Mula and Lemire, "Faster base64 encoding and decoding using AVX2 instructions"
// (2018).

// The first 12 bytes as characters.
inline __m128i encode12(__m128i bytes) {
    bytes = _mm_shuffle_epi8(bytes, _mm_setr_epi8(1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10));
    const __m128i high =
        _mm_mulhi_epu16(_mm_and_si128(bytes, _mm_set1_epi32(0x0FC0FC00)), _mm_set1_epi32(0x04000040));
    const __m128i low =
        _mm_mullo_epi16(_mm_and_si128(bytes, _mm_set1_epi32(0x003F03F0)), _mm_set1_epi32(0x01000010));
    const __m128i sextets = _mm_or_si128(high, low);

    // Range of each sextet: 13 for A-Z, 0 for a-z, 1 to 10 for the digits, 11 and 12 for + and /.
    const __m128i upper = _mm_cmpgt_epi8(_mm_set1_epi8(26), sextets);
    const __m128i range =
        _mm_or_si128(_mm_subs_epu8(sextets, _mm_set1_epi8(51)), _mm_and_si128(upper, _mm_set1_epi8(13)));
    const __m128i offsets =
        _mm_setr_epi8('a' - 26, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52, '0' - 52,
                      '0' - 52, '0' - 52, '0' - 52, '+' - 62, '/' - 63, 'A', 0, 0);
    return _mm_add_epi8(sextets, _mm_shuffle_epi8(offsets, range));
}

inline void encode48(const __m128i* blocks, char* out) {
    store(out, encode12(blocks[0]));
    store(out + 16, encode12(_mm_alignr_epi8(blocks[1], blocks[0], 12)));
    store(out + 32, encode12(_mm_alignr_epi8(blocks[2], blocks[1], 8)));
    store(out + 48, encode12(_mm_srli_si128(blocks[2], 4)));
}

// Decodes text to bytes, four vectors to three. What is not of the alphabet makes it fail.
class NarrowDecoder {
  public:
    // The vectors one after the other: every one but the first of four completes a block.
    void step(unsigned vector, __m128i text, __m128i* blocks) {
        const __m128i next = decode16(text);
        __m128i* const block = blocks + vector / 4 * 3 + (vector + 3) % 4;
        switch (vector % 4) {
            case 1:
                *block = _mm_or_si128(m_last, _mm_slli_si128(next, 12));
                break;
            case 2:
                *block = _mm_or_si128(_mm_srli_si128(m_last, 4), _mm_slli_si128(next, 8));
                break;
            case 3:
                *block = _mm_or_si128(_mm_srli_si128(m_last, 8), _mm_slli_si128(next, 4));
                break;
        }
        m_last = next;
    }
    void step(unsigned vector, const char* text, __m128i* blocks) {
        step(vector, load(text + 16 * vector), blocks);
    }
    template <unsigned vectors>
    void decode(const char* text, __m128i* blocks) {
        for (unsigned i = 0; i < vectors; ++i) step(i, text, blocks);
    }

    // The last one or two blocks, whose text ends in "==" or "=". Read with loads that stay inside the text;
    // whatever stands where the padding does is taken as "A" and falls behind the last block.
    void decodeLast(const char* text, std::size_t count, __m128i* blocks);

    bool failed() const { return _mm_movemask_epi8(m_faults) != 0; }

  protected:
    // Where a table has what a character needs: the mean of its upper five bits and of what `byLowNibble` has
    // for its lower four (Aqrit, "base64 by hashing").
    static __m128i place(__m128i byLowNibble, __m128i text) {
        return _mm_avg_epu8(_mm_shuffle_epi8(byLowNibble, text), _mm_srli_epi32(text, 3));
    }
    // The difference between a character and its six bits.
    static __m128i lowForDelta() { return _mm_setr_epi8(1, 1, 1, 1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 15, 0, 15); }
    static __m128i delta() {
        return _mm_setr_epi8(0, 0, 0, 19, 4, -65, -65, -71, -71, 0, 16, -61, -65, -65, -71, -71);
    }
    // Added to a character of the alphabet, with saturation, it makes a number above zero; to any other, one
    // below.
    static __m128i lowForCheck() {
        return _mm_setr_epi8(13, 1, 1, 1, 1, 1, 1, 1, 1, 1, 3, 7, 11, 11, 11, 15);
    }
    static __m128i check() {
        return _mm_setr_epi8(-128, -128, -128, -128, -49, -65, -43, -90, -75, -122, -47, -128, -79, -128,
                             -111, -128);
    }
    // How the bytes of 24-bit groups stand.
    static __m128i orderOfBytes() {
        return _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1);
    }

  private:
    // 16 characters as 12 bytes with four zeros above.
    __m128i decode16(__m128i text) {
        const __m128i sextets = _mm_adds_epi8(_mm_shuffle_epi8(delta(), place(lowForDelta(), text)), text);
        const __m128i checked = _mm_adds_epi8(_mm_shuffle_epi8(check(), place(lowForCheck(), text)), text);
        m_faults = _mm_or_si128(m_faults, checked);
        const __m128i pairs = _mm_maddubs_epi16(sextets, _mm_set1_epi32(0x01400140));
        const __m128i triples = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
        return _mm_shuffle_epi8(triples, orderOfBytes());
    }

    __m128i m_last = _mm_setzero_si128();
    __m128i m_faults = _mm_setzero_si128();
};

inline void NarrowDecoder::decodeLast(const char* text, std::size_t count, __m128i* blocks) {
    const __m128i fill = _mm_set1_epi8('A');
    step(0, load(text), blocks);
    if (count == 1) {
        const __m128i padding = _mm_setr_epi8(0, 0, 0, 0, 0, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
        step(1, _mm_blendv_epi8(_mm_srli_si128(load(text + 8), 8), fill, padding), blocks);
    } else {
        const __m128i padding = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1, -1, -1, -1, -1);
        step(1, load(text + 16), blocks);
        step(2, _mm_blendv_epi8(_mm_srli_si128(load(text + 28), 4), fill, padding), blocks);
    }
}

template <unsigned rounds, class Decoder>
inline DecryptedText decryptRounds(const std::uint8_t* key, const char* ivText, const char* text,
                                   std::uint8_t* out, std::size_t blocks) {
    Decoder decoder;
    __m128i few[3];
    decoder.decodeLast(ivText, 1, few);
    const DecryptingKeys<__m128i, rounds> keys(ExpandedKey({key, rounds - 6}).schedule());
    Decryptor<rounds> decryptor(keys, few[0]);
    decryptMany<__m128i>(decryptor, decoder, text, out, blocks);
    if (blocks >= 3) {
        decoder.template decode<4>(text, few);
        decryptor.template decrypt<3>(few, out);
        blocks -= 3, text += 64, out += 48;
    }
    if (blocks > 0) decoder.decodeLast(text, blocks, few);
    for (std::size_t i = 0; i < blocks; ++i) decryptor.template decrypt<1>(few + i, out + 16 * i);
    const bool padded = blocks == 1 ? text[22] == '=' && text[23] == '=' : blocks == 0 || text[43] == '=';
    if (!padded || decoder.failed()) return DecryptedText::notBase64;
    return decryptor.isASCII() ? DecryptedText::ascii : DecryptedText::otherBytes;
}

// `Decoder` takes 16 characters a step.
template <class Decoder>
inline DecryptedText decryptFromBase64By(AESKey key, const char* ivText, const char* text, std::uint8_t* out,
                                         std::size_t blocks) {
    if (key.words == 4) return decryptRounds<10, Decoder>(key.bytes, ivText, text, out, blocks);
    if (key.words == 6) return decryptRounds<12, Decoder>(key.bytes, ivText, text, out, blocks);
    return decryptRounds<14, Decoder>(key.bytes, ivText, text, out, blocks);
}

}  // namespace
}  // namespace torvel
