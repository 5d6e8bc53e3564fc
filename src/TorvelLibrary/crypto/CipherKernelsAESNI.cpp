#include "TorvelLibrary/crypto/CipherBlocksX86.h"
#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelLibrary/crypto/CipherKernelsX86.h"

// AES instructions with SSSE3 base64. Decryption keeps six blocks in flight between decoded text and stored
// bytes.
namespace torvel {
namespace {

// For the equivalent inverse cipher (FIPS-197 5.3.5): reversed, InvMixColumns on the inner keys. Wiped when
// it goes.
class DecryptingKeys {
  public:
    explicit DecryptingKeys(const AESKeySchedule& schedule) : m_rounds(schedule.rounds) {
        const __m128i* const keys = encryptingKeys(schedule).key;
        m_keys[0] = keys[m_rounds];
        for (unsigned i = 1; i < m_rounds; ++i) m_keys[i] = _mm_aesimc_si128(keys[m_rounds - i]);
        m_keys[m_rounds] = keys[0];
    }
    ~DecryptingKeys() { wipe(m_keys, m_rounds + 1); }
    DecryptingKeys(const DecryptingKeys&) = delete;
    DecryptingKeys& operator=(const DecryptingKeys&) = delete;

    operator RoundKeys() const { return {m_keys, m_rounds}; }

  private:
    __m128i m_keys[15];
    unsigned m_rounds;
};

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
void decryptSideBySide(RoundKeys keys, __m128i* state) {
    for (int b = 0; b < count; ++b) state[b] = _mm_xor_si128(state[b], keys.key[0]);
    for (unsigned round = 1; round < keys.rounds; ++round)
        for (int b = 0; b < count; ++b) state[b] = _mm_aesdec_si128(state[b], keys.key[round]);
    for (int b = 0; b < count; ++b) state[b] = _mm_aesdeclast_si128(state[b], keys.key[keys.rounds]);
}

template <int count>
void encryptGroup(RoundKeys keys, const std::uint8_t* in, std::uint8_t* out) {
    __m128i state[count];
    for (int b = 0; b < count; ++b) state[b] = load(in + 16 * b);
    encryptSideBySide<count>(keys, state);
    for (int b = 0; b < count; ++b) store(out + 16 * b, state[b]);
}

// --- CBC

// Decrypts runs of blocks one behind the other.
class DecryptingChain {
  public:
    DecryptingChain(const AESKeySchedule& schedule, __m128i iv) : m_keys(schedule), m_before(iv) {}

    template <int count>
    void decrypt(const __m128i* cipher, std::uint8_t* out) {
        __m128i state[count];
        for (int b = 0; b < count; ++b) state[b] = cipher[b];
        decryptSideBySide<count>(m_keys, state);
        for (int b = 0; b < count; ++b) {
            const __m128i plain = _mm_xor_si128(state[b], b == 0 ? m_before : cipher[b - 1]);
            m_seen = _mm_or_si128(m_seen, plain);
            store(out + 16 * b, plain);
        }
        m_before = cipher[count - 1];
    }

    template <int count>
    void decrypt(const std::uint8_t* in, std::uint8_t* out) {
        __m128i cipher[count];
        for (int b = 0; b < count; ++b) cipher[b] = load(in + 16 * b);
        decrypt<count>(cipher, out);
    }

    // Of all plain bytes so far.
    bool isASCII() const { return _mm_movemask_epi8(m_seen) == 0; }

  private:
    DecryptingKeys m_keys;
    __m128i m_before;  // the cipher block before the next one
    __m128i m_seen = _mm_setzero_si128();
};

// --- Base64 (RFC 4648), 12 bytes to 16 characters. After Mula and Lemire, "Faster base64 encoding and
// decoding using AVX2 instructions" (2018).

// The first 12 bytes as characters.
__m128i encode12(__m128i bytes) {
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

void encode48(const __m128i* blocks, char* out) {
    store(out, encode12(blocks[0]));
    store(out + 16, encode12(_mm_alignr_epi8(blocks[1], blocks[0], 12)));
    store(out + 32, encode12(_mm_alignr_epi8(blocks[2], blocks[1], 8)));
    store(out + 48, encode12(_mm_srli_si128(blocks[2], 4)));
}

// 16 characters as 12 bytes with four zeros above. Characters outside the alphabet leave bits in `faults`.
__m128i decode16(__m128i text, __m128i& faults) {
    const __m128i mask = _mm_set1_epi8(0x2F);
    const __m128i highNibbles = _mm_and_si128(_mm_srli_epi32(text, 4), mask);
    const __m128i lowNibbles = _mm_and_si128(text, mask);
    const __m128i low = _mm_shuffle_epi8(_mm_setr_epi8(0x15, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11, 0x11,
                                                       0x11, 0x13, 0x1A, 0x1B, 0x1B, 0x1B, 0x1A),
                                         lowNibbles);
    const __m128i high = _mm_shuffle_epi8(_mm_setr_epi8(0x10, 0x10, 0x01, 0x02, 0x04, 0x08, 0x04, 0x08, 0x10,
                                                        0x10, 0x10, 0x10, 0x10, 0x10, 0x10, 0x10),
                                          highNibbles);
    faults = _mm_or_si128(faults, _mm_and_si128(low, high));

    const __m128i isSlash = _mm_cmpeq_epi8(text, mask);
    const __m128i offsets =
        _mm_shuffle_epi8(_mm_setr_epi8(0, 16, 19, 4, -65, -65, -71, -71, 0, 0, 0, 0, 0, 0, 0, 0),
                         _mm_add_epi8(isSlash, highNibbles));
    const __m128i sextets = _mm_add_epi8(text, offsets);
    const __m128i pairs = _mm_maddubs_epi16(sextets, _mm_set1_epi32(0x01400140));
    const __m128i triples = _mm_madd_epi16(pairs, _mm_set1_epi32(0x00011000));
    return _mm_shuffle_epi8(triples, _mm_setr_epi8(2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1));
}

// 64 characters, in four registers, as three blocks.
void decode64(const __m128i* text, __m128i* blocks, __m128i& faults) {
    const __m128i second = decode16(text[1], faults), third = decode16(text[2], faults);
    blocks[0] = _mm_or_si128(decode16(text[0], faults), _mm_slli_si128(second, 12));
    blocks[1] = _mm_or_si128(_mm_srli_si128(second, 4), _mm_slli_si128(third, 8));
    blocks[2] = _mm_or_si128(_mm_srli_si128(third, 8), _mm_slli_si128(decode16(text[3], faults), 4));
}

void decode64(const char* text, __m128i* blocks, __m128i& faults) {
    const __m128i loaded[4] = {load(text), load(text + 16), load(text + 32), load(text + 48)};
    decode64(loaded, blocks, faults);
}

bool any(__m128i faults) { return _mm_movemask_epi8(_mm_cmpeq_epi8(faults, _mm_setzero_si128())) != 0xFFFF; }

// --- CBC and base64 in one pass

// The last one or two blocks, whose text ends in "==" or "=". Read with loads that stay inside the text;
// whatever stands where the padding does is taken as "A" and falls behind the last block.
bool decodeTail(const char* text, std::size_t blocks, __m128i* cipher, __m128i& faults) {
    const __m128i fill = _mm_set1_epi8('A');
    __m128i loaded[4] = {load(text), fill, fill, fill};
    if (blocks == 1) {
        const __m128i padding = _mm_setr_epi8(0, 0, 0, 0, 0, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1);
        loaded[1] = _mm_blendv_epi8(_mm_srli_si128(load(text + 8), 8), fill, padding);
    } else {
        const __m128i padding = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1, -1, -1, -1, -1);
        loaded[1] = load(text + 16);
        loaded[2] = _mm_blendv_epi8(_mm_srli_si128(load(text + 28), 4), fill, padding);
    }
    decode64(loaded, cipher, faults);
    return blocks == 1 ? text[22] == '=' && text[23] == '=' : text[43] == '=';
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
    DecryptingChain chain(schedule, load(iv));
    for (; blocks >= 8; blocks -= 8, in += 128, out += 128) chain.decrypt<8>(in, out);
    for (; blocks > 0; --blocks, in += 16, out += 16) chain.decrypt<1>(in, out);
}

}  // namespace aesni

namespace {

void encryptToBase64(AESKey key, const std::uint8_t* iv, const std::uint8_t* in, std::size_t size,
                     char* out) {
    encryptToBase64By(encode48, key, iv, in, size, out);
}

DecryptedText decryptFromBase64(AESKey key, const char* ivText, const char* text, std::uint8_t* out,
                                std::size_t blocks) {
    __m128i faults = _mm_setzero_si128(), cipher[6];
    decodeTail(ivText, 1, cipher, faults);
    const ExpandedKey expanded(key);
    DecryptingChain chain(expanded.schedule(), cipher[0]);
    for (; blocks >= 6; blocks -= 6, text += 128, out += 96) {
        decode64(text, cipher, faults);
        decode64(text + 64, cipher + 3, faults);
        chain.decrypt<6>(cipher, out);
    }
    if (blocks >= 3) {
        decode64(text, cipher, faults);
        chain.decrypt<3>(cipher, out);
        blocks -= 3, text += 64, out += 48;
    }
    bool padded = true;
    if (blocks > 0) {
        padded = decodeTail(text, blocks, cipher, faults);
        chain.decrypt<1>(cipher, out);
        if (blocks == 2) chain.decrypt<1>(cipher + 1, out + 16);
    }
    if (!padded || any(faults)) return DecryptedText::notBase64;
    return chain.isASCII() ? DecryptedText::ascii : DecryptedText::otherBytes;
}

}  // namespace

constinit const CipherKernels aesniCipherKernels = {
    "aesni",           aesni::expandKey, aesni::encryptBlocks, aesni::cbcEncrypt,
    aesni::cbcDecrypt, encryptToBase64,  decryptFromBase64,
};

}  // namespace torvel
