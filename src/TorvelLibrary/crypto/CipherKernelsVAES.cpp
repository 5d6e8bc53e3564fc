#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelLibrary/crypto/CipherKernelsX86.h"

#include <immintrin.h>
#include <string.h>

// Decryption with 512-bit registers: 512 characters become 24 cipher blocks and those 24 plain blocks without
// leaving the registers. Encryption is bound by the latency of one AES block after another, which wider
// registers do not shorten, and stays that of the AES-NI tier.
namespace torvel {
namespace {

constexpr std::size_t textVector = 64, groupText = 4 * textVector;  // characters
constexpr std::size_t groupBlocks = 12, groupBytes = groupBlocks * aesBlockSize;

struct Tables {
    alignas(64) std::uint8_t sextets[128];  // of a character; the top bit tells that it has none
    alignas(
        64) std::uint8_t gather[3][64];  // where the bytes of a vector stand in two vectors of 24-bit groups
};

constexpr Tables makeTables() {
    Tables tables{};
    for (std::uint8_t& sextet : tables.sextets) sextet = 0x80;
    const char* const alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::uint8_t i = 0; i < 64; ++i) tables.sextets[static_cast<unsigned>(alphabet[i])] = i;
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

// Decodes four vectors of text to three of bytes. What is not of the alphabet leaves top bits in `faults`.
class Decoder {
  public:
    void decode(const __m512i* text, __m512i* bytes) {
        __m512i groups[4];
        for (unsigned i = 0; i < 4; ++i) groups[i] = group(text[i]);
        for (unsigned i = 0; i < 3; ++i)
            bytes[i] =
                _mm512_permutex2var_epi8(groups[i], _mm512_load_si512(tables.gather[i]), groups[i + 1]);
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

    __m512i m_faults = _mm512_setzero_si512();
};

// Chained decryption of vectors of four blocks, by the equivalent inverse cipher (FIPS-197 5.3.5).
template <unsigned rounds>
class Decryptor {
  public:
    Decryptor(const AESKeySchedule& schedule, const std::uint8_t* iv)
        : m_before(_mm512_broadcast_i32x4(_mm_loadu_si128(reinterpret_cast<const __m128i*>(iv)))) {
        const auto* const keys = reinterpret_cast<const __m128i*>(schedule.roundKeys);
        m_keys[0] = _mm512_broadcast_i32x4(keys[rounds]);
        for (unsigned i = 1; i < rounds; ++i)
            m_keys[i] = _mm512_broadcast_i32x4(_mm_aesimc_si128(keys[rounds - i]));
        m_keys[rounds] = _mm512_broadcast_i32x4(keys[0]);
    }
    ~Decryptor() { explicit_bzero(m_keys, sizeof m_keys); }
    Decryptor(const Decryptor&) = delete;
    Decryptor& operator=(const Decryptor&) = delete;

    // Leaves the plain blocks in place of the cipher blocks.
    template <unsigned count>
    void decrypt(__m512i* blocks) {
        __m512i state[count], lastKey[count];
        for (unsigned i = 0; i < count; ++i) {
            const __m512i before = _mm512_alignr_epi64(blocks[i], i == 0 ? m_before : blocks[i - 1], 6);
            lastKey[i] = _mm512_xor_si512(before, m_keys[rounds]);
            state[i] = _mm512_xor_si512(blocks[i], m_keys[0]);
        }
        m_before = blocks[count - 1];
        for (unsigned round = 1; round < rounds; ++round)
            for (unsigned i = 0; i < count; ++i) state[i] = _mm512_aesdec_epi128(state[i], m_keys[round]);
        for (unsigned i = 0; i < count; ++i) blocks[i] = _mm512_aesdeclast_epi128(state[i], lastKey[i]);
    }

    // Stores plain vectors, or the lanes of one.
    template <unsigned count>
    void store(const __m512i* plain, std::uint8_t* out) {
        for (unsigned i = 0; i < count; ++i) {
            m_seen = _mm512_or_si512(m_seen, plain[i]);
            _mm512_storeu_si512(out + 64 * i, plain[i]);
        }
    }
    void store(__mmask64 lanes, __m512i plain, std::uint8_t* out) {
        m_seen = _mm512_or_si512(m_seen, _mm512_maskz_mov_epi8(lanes, plain));
        _mm512_mask_storeu_epi8(out, lanes, plain);
    }

    // Of all plain bytes stored so far.
    bool isASCII() const { return _mm512_movepi8_mask(m_seen) == 0; }

  private:
    __m512i m_keys[rounds + 1];
    __m512i m_before;  // whose last block comes before the next one
    __m512i m_seen = _mm512_setzero_si512();
};

// The lanes of vector `index` that belong to the first `count` bytes.
__mmask64 lanesBelow(std::size_t count, std::size_t index) {
    const std::size_t start = 64 * index;
    if (count <= start) return 0;
    return count - start >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << (count - start)) - 1;
}

// The last blocks, fewer than a group, with the padding of the text.
template <unsigned rounds>
bool decryptTail(Decryptor<rounds>& decryptor, Decoder& decoder, const char* text, std::uint8_t* out,
                 std::size_t blocks) {
    const std::size_t bytes = blocks * aesBlockSize, padding = (3 - bytes % 3) % 3;
    const std::size_t digits = (bytes + padding) / 3 * 4 - padding;
    __m512i loaded[4], plain[3];
    for (unsigned i = 0; i < 4; ++i)
        loaded[i] =
            _mm512_mask_loadu_epi8(_mm512_set1_epi8('A'), lanesBelow(digits, i), text + textVector * i);
    decoder.decode(loaded, plain);
    decryptor.template decrypt<3>(plain);
    for (unsigned i = 0; i < 3; ++i) decryptor.store(lanesBelow(bytes, i), plain[i], out + 64 * i);
    return memcmp(text + digits, "==", padding) == 0;
}

template <unsigned rounds>
DecryptedText decryptRounds(const AESKeySchedule& schedule, const std::uint8_t* iv, const char* text,
                            std::uint8_t* out, std::size_t blocks) {
    Decryptor<rounds> decryptor(schedule, iv);
    Decoder decoder;
    __m512i loaded[8], plain[6];
    for (; blocks >= 2 * groupBlocks;
         blocks -= 2 * groupBlocks, text += 2 * groupText, out += 2 * groupBytes) {
        for (unsigned i = 0; i < 8; ++i) loaded[i] = _mm512_loadu_si512(text + textVector * i);
        decoder.decode(loaded, plain);
        decoder.decode(loaded + 4, plain + 3);
        decryptor.template decrypt<6>(plain);
        decryptor.template store<6>(plain, out);
    }
    if (blocks >= groupBlocks) {
        for (unsigned i = 0; i < 4; ++i) loaded[i] = _mm512_loadu_si512(text + textVector * i);
        decoder.decode(loaded, plain);
        decryptor.template decrypt<3>(plain);
        decryptor.template store<3>(plain, out);
        blocks -= groupBlocks, text += groupText, out += groupBytes;
    }
    const bool padded = blocks == 0 || decryptTail(decryptor, decoder, text, out, blocks);
    if (!padded || decoder.failed()) return DecryptedText::notBase64;
    return decryptor.isASCII() ? DecryptedText::ascii : DecryptedText::otherBytes;
}

DecryptedText cbcDecryptFromBase64(const AESKeySchedule& schedule, const std::uint8_t* iv, const char* text,
                                   std::uint8_t* out, std::size_t blocks) {
    // Short messages do not win back what the wide keys cost.
    if (blocks < groupBlocks) return aesni::cbcDecryptFromBase64(schedule, iv, text, out, blocks);
    if (schedule.rounds == 10) return decryptRounds<10>(schedule, iv, text, out, blocks);
    if (schedule.rounds == 12) return decryptRounds<12>(schedule, iv, text, out, blocks);
    return decryptRounds<14>(schedule, iv, text, out, blocks);
}

}  // namespace

constinit const CipherKernels vaesCipherKernels = {
    "vaes",
    aesni::expandKey,
    aesni::encryptBlocks,
    aesni::cbcEncrypt,
    aesni::cbcDecrypt,
    aesni::cbcEncryptToBase64,
    cbcDecryptFromBase64,
};

}  // namespace torvel
