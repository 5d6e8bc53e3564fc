#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelLibrary/crypto/CipherKernelsX86.h"
#include "TorvelLibrary/crypto/CipherMessagesX86.h"

// Decryption with 512-bit registers: 512 characters become 24 cipher blocks and those 24 plain blocks without
// leaving the registers. Encryption is bound by the latency of one AES block after another, which wider
// registers do not shorten; they only take the base64 out of its way.
namespace torvel {
namespace {

constexpr std::size_t textVector = 64, groupText = 4 * textVector;  // characters
constexpr std::size_t groupBlocks = 12, groupBytes = groupBlocks * aesBlockSize;

constexpr const char* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Tables {
    alignas(64) char digits[64];
    alignas(64) std::uint8_t spread[64];     // bytes 1, 0, 2, 1 of every three bytes
    alignas(64) std::uint8_t sextets[128];   // of a character; the top bit tells that it has none
    alignas(64) std::uint8_t gather[3][64];  // where the bytes of a vector stand in two of 24-bit groups
};

constexpr Tables makeTables() {
    Tables tables{};
    for (std::uint8_t& sextet : tables.sextets) sextet = 0x80;
    for (std::uint8_t i = 0; i < 64; ++i) {
        tables.digits[i] = alphabet[i];
        tables.sextets[static_cast<unsigned>(alphabet[i])] = i;
        tables.spread[i] = static_cast<std::uint8_t>(i / 4 * 3 + (i % 4 == 0   ? 1
                                                                  : i % 4 == 1 ? 0
                                                                  : i % 4 == 2 ? 2
                                                                               : 1));
    }
    for (unsigned vector = 0; vector < 3; ++vector) {
        for (unsigned i = 0; i < 64; ++i) {
            const unsigned byte = 64 * vector + i, source = byte / 48 - vector, within = byte % 48;
            tables.gather[vector][i] =
                static_cast<std::uint8_t>(64 * source + within / 3 * 4 + 2 - within % 3);
        }
    }
    return tables;
}

constexpr Tables tables = makeTables();

// Three blocks as 64 characters: each byte of a 64-bit lane picks its six bits out of the spread ones.
void encode48(const __m128i* blocks, char* out) {
    const __m512i two = _mm512_inserti32x4(_mm512_castsi128_si512(blocks[0]), blocks[1], 1);
    const __m512i bytes =
        _mm512_permutexvar_epi8(_mm512_load_si512(tables.spread), _mm512_inserti32x4(two, blocks[2], 2));
    const __m512i sextets = _mm512_multishift_epi64_epi8(_mm512_set1_epi64(0x3036242A1016040A), bytes);
    _mm512_storeu_si512(out, _mm512_permutexvar_epi8(sextets, _mm512_load_si512(tables.digits)));
}

// Decodes text to bytes, four vectors to three. What is not of the alphabet makes it fail.
class Decoder {
  public:
    // The vectors one after the other: every one but the first of four completes a vector of bytes.
    void step(unsigned vector, const char* text, __m512i* bytes) {
        const __m512i next = group(_mm512_loadu_si512(text + textVector * vector));
        const unsigned place = vector % 4;
        if (place > 0)
            bytes[vector / 4 * 3 + place - 1] =
                _mm512_permutex2var_epi8(m_last, _mm512_load_si512(tables.gather[place - 1]), next);
        m_last = next;
    }
    template <unsigned vectors>
    void decode(const char* text, __m512i* bytes) {
        for (unsigned i = 0; i < vectors; ++i) step(i, text, bytes);
    }
    // One vector to three blocks; what stands behind them is of no use.
    __m512i decode(__m512i text) {
        return _mm512_permutexvar_epi8(_mm512_load_si512(tables.gather[0]), group(text));
    }
    bool failed() const { return _mm512_movepi8_mask(m_faults) != 0; }

  private:
    // Four sextets a 32-bit lane, joined to 24 bits.
    __m512i group(__m512i text) {
        const __m512i sextets = _mm512_permutex2var_epi8(_mm512_load_si512(tables.sextets), text,
                                                         _mm512_load_si512(tables.sextets + 64));
        m_faults = _mm512_or_si512(m_faults, _mm512_or_si512(sextets, text));
        const __m512i pairs = _mm512_maddubs_epi16(sextets, _mm512_set1_epi32(0x01400140));
        return _mm512_madd_epi16(pairs, _mm512_set1_epi32(0x00011000));
    }

    __m512i m_last = _mm512_setzero_si512();
    __m512i m_faults = _mm512_setzero_si512();
};

// Chained decryption of vectors of four blocks.
template <unsigned rounds>
class Decryptor {
  public:
    // The IV is the first block of `iv`. The keys stay where they are, so that the rest of it can stay in
    // registers.
    Decryptor(const DecryptingKeys<__m512i, rounds>& keys, __m512i iv)
        : m_keys(keys.key), m_before(_mm512_shuffle_i64x2(iv, iv, 0)) {}

    // Writes the plain blocks. After every round but the last there is time for something else,
    // beside(round).
    template <unsigned count, class Beside>
    [[gnu::always_inline]] inline void decrypt(const __m512i* blocks, std::uint8_t* out, Beside beside) {
        __m512i plain[count];
        transform<count>(blocks, plain, beside);
        for (unsigned i = 0; i < count; ++i) {
            m_seen = _mm512_or_si512(m_seen, plain[i]);
            _mm512_storeu_si512(out + 64 * i, plain[i]);
        }
    }
    template <unsigned count>
    void decrypt(const __m512i* blocks, std::uint8_t* out) {
        decrypt<count>(blocks, out, [](unsigned) {});
    }

    // One to three blocks in one vector. Written block by block: the padding is read from the last one at
    // once, which takes long behind a wide store that crosses lines of the cache.
    void decryptFew(__m512i blocks, std::size_t count, std::uint8_t* out) {
        __m512i plain;
        transform<1>(&blocks, &plain, [](unsigned) {});
        m_before = _mm512_shuffle_i64x2(blocks, blocks, 0xA4);  // the third, where the fourth stands
        m_seen = _mm512_mask_or_epi64(m_seen, static_cast<__mmask8>((1U << 2 * count) - 1), m_seen, plain);
        store(out, _mm512_castsi512_si128(plain));
        store(out + 16, _mm512_extracti32x4_epi32(plain, 1));
        store(out + 32, _mm512_extracti32x4_epi32(plain, 2));
    }

    // Of all plain bytes stored so far.
    bool isASCII() const { return _mm512_movepi8_mask(m_seen) == 0; }

  private:
    template <unsigned count, class Beside>
    [[gnu::always_inline]] inline void transform(const __m512i* blocks, __m512i* plain, Beside beside) {
        __m512i lastKey[count];
        for (unsigned i = 0; i < count; ++i) {
            const __m512i before = _mm512_alignr_epi64(blocks[i], i == 0 ? m_before : blocks[i - 1], 6);
            lastKey[i] = _mm512_xor_si512(before, m_keys[rounds]);
            plain[i] = _mm512_xor_si512(blocks[i], m_keys[0]);
        }
        m_before = blocks[count - 1];
        for (unsigned round = 1; round < rounds; ++round) {
            for (unsigned i = 0; i < count; ++i) plain[i] = _mm512_aesdec_epi128(plain[i], m_keys[round]);
            beside(round);
        }
        for (unsigned i = 0; i < count; ++i) plain[i] = _mm512_aesdeclast_epi128(plain[i], lastKey[i]);
    }

    const __m512i* m_keys;
    __m512i m_before;  // whose last block comes before the next one
    __m512i m_seen = _mm512_setzero_si512();
};

// The digits of one block or of two, 22 or 43; the rest of the vector is as good as any.
__m512i loadDigits(const char* text, std::size_t blocks) {
    const __mmask64 lanes = (std::uint64_t{1} << (blocks == 1 ? 22 : 43)) - 1;
    return _mm512_mask_loadu_epi8(_mm512_set1_epi8('A'), lanes, text);
}

// The last blocks, fewer than a group, with the padding of the text.
template <unsigned rounds>
bool decryptTail(Decryptor<rounds>& decryptor, Decoder& decoder, const char* text, std::uint8_t* out,
                 std::size_t blocks) {
    for (; blocks >= 3; blocks -= 3, text += textVector, out += 3 * aesBlockSize)
        decryptor.decryptFew(decoder.decode(_mm512_loadu_si512(text)), 3, out);
    if (blocks == 0) return true;
    decryptor.decryptFew(decoder.decode(loadDigits(text, blocks)), blocks, out);
    return blocks == 1 ? text[22] == '=' && text[23] == '=' : text[43] == '=';
}

template <unsigned rounds>
DecryptedText decryptRounds(AESKey key, const char* ivText, const char* text, std::uint8_t* out,
                            std::size_t blocks) {
    Decoder decoder;
    const __m512i iv = decoder.decode(loadDigits(ivText, 1));
    const DecryptingKeys<__m512i, rounds> keys(ExpandedKey({key.bytes, rounds - 6}).schedule());
    Decryptor<rounds> decryptor(keys, iv);
    decryptMany<__m512i>(decryptor, decoder, text, out, blocks);
    __m512i few[3];
    if (blocks >= groupBlocks) {
        decoder.template decode<4>(text, few);
        decryptor.template decrypt<3>(few, out);
        blocks -= groupBlocks, text += groupText, out += groupBytes;
    }
    const bool padded = decryptTail(decryptor, decoder, text, out, blocks);
    if (!padded || decoder.failed()) return DecryptedText::notBase64;
    return decryptor.isASCII() ? DecryptedText::ascii : DecryptedText::otherBytes;
}

void encryptBlocks(const AESKeySchedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                   std::size_t blocks) {
    const RoundKeys keys = encryptingKeys(schedule);
    for (; blocks >= 16; blocks -= 16, in += 256, out += 256) {
        __m512i state[4], key = _mm512_broadcast_i32x4(keys.key[0]);
        for (unsigned i = 0; i < 4; ++i) state[i] = _mm512_xor_si512(_mm512_loadu_si512(in + 64 * i), key);
        for (unsigned round = 1; round < keys.rounds; ++round) {
            key = _mm512_broadcast_i32x4(keys.key[round]);
            for (unsigned i = 0; i < 4; ++i) state[i] = _mm512_aesenc_epi128(state[i], key);
        }
        key = _mm512_broadcast_i32x4(keys.key[keys.rounds]);
        for (unsigned i = 0; i < 4; ++i)
            _mm512_storeu_si512(out + 64 * i, _mm512_aesenclast_epi128(state[i], key));
    }
    aesni::encryptBlocks(schedule, in, out, blocks);
}

void encryptToBase64(AESKey key, const std::uint8_t* iv, const std::uint8_t* in, std::size_t size,
                     char* out) {
    encryptToBase64By(encode48, key, iv, in, size, out);
}

DecryptedText decryptFromBase64(AESKey key, const char* ivText, const char* text, std::uint8_t* out,
                                std::size_t blocks) {
    // Short messages do not win back what the wide keys cost.
    if (blocks < groupBlocks) return avx2CipherKernels.decryptFromBase64(key, ivText, text, out, blocks);
    if (key.words == 4) return decryptRounds<10>(key, ivText, text, out, blocks);
    if (key.words == 6) return decryptRounds<12>(key, ivText, text, out, blocks);
    return decryptRounds<14>(key, ivText, text, out, blocks);
}

}  // namespace

constinit const CipherKernels vaesCipherKernels = {
    "vaes",          aesni::expandKey,  encryptBlocks, aesni::cbcEncrypt, aesni::cbcDecrypt,
    encryptToBase64, decryptFromBase64,
};

}  // namespace torvel
