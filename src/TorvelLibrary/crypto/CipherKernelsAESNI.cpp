#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelLibrary/crypto/CipherKernelsX86.h"

#include <immintrin.h>
#include <string.h>

// AES instructions with SSSE3 base64. CBC encryption waits for each block's AES, so that base64 of finished
// blocks costs nothing beside it; decryption keeps six blocks in flight between decoded text and stored
// bytes.
namespace torvel {
namespace {

__m128i load(const void* from) { return _mm_loadu_si128(static_cast<const __m128i*>(from)); }
void store(void* to, __m128i value) { _mm_storeu_si128(static_cast<__m128i*>(to), value); }

// Round keys in registers' form; wiped when it goes.
struct RoundKeys {
    __m128i key[15];
    unsigned rounds;

    explicit RoundKeys(const AESKeySchedule& schedule) : rounds(schedule.rounds) {
        for (unsigned i = 0; i <= rounds; ++i) key[i] = load(schedule.roundKeys + aesBlockSize * i);
    }
    ~RoundKeys() { explicit_bzero(key, sizeof key); }
    RoundKeys(const RoundKeys&) = delete;
    RoundKeys& operator=(const RoundKeys&) = delete;

    // For the equivalent inverse cipher (FIPS-197 5.3.5): reversed, InvMixColumns on the inner keys.
    void invert() {
        for (unsigned i = 0, j = rounds; i <= j; ++i, --j) {
            const __m128i first = key[i];
            key[i] = i == 0 ? key[j] : _mm_aesimc_si128(key[j]);
            key[j] = i == 0 ? first : _mm_aesimc_si128(first);
        }
    }
};

// --- Key schedule

std::uint32_t substitutedWord(std::uint32_t word) {
    const __m128i state = _mm_set1_epi32(static_cast<int>(word));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(_mm_aeskeygenassist_si128(state, 0)));
}

// FIPS-197 5.2, word by word (little-endian, so that RotWord turns right).
void expandAnyKey(const std::uint8_t* key, unsigned keyWords, AESKeySchedule& schedule) {
    std::uint32_t words[60];
    memcpy(words, key, 4 * keyWords);
    std::uint32_t constant = 1;
    for (unsigned i = keyWords; i < 4 * (schedule.rounds + 1); ++i) {
        std::uint32_t word = words[i - 1];
        if (i % keyWords == 0) {
            word = substitutedWord(word >> 8 | word << 24) ^ constant;
            constant = (constant << 1 ^ (constant >> 7) * 0x11B) & 0xFF;
        } else if (keyWords == 8 && i % keyWords == 4) {
            word = substitutedWord(word);
        }
        words[i] = words[i - keyWords] ^ word;
    }
    memcpy(schedule.roundKeys, words, 16 * (schedule.rounds + 1));
    explicit_bzero(words, sizeof words);
}

template <int constant>
__m128i nextKey128(__m128i key, std::uint8_t* out) {
    const __m128i word = _mm_shuffle_epi32(_mm_aeskeygenassist_si128(key, constant), 0xFF);
    key = _mm_xor_si128(key, _mm_slli_si128(key, 4));
    key = _mm_xor_si128(key, _mm_slli_si128(key, 8));
    key = _mm_xor_si128(key, word);
    store(out, key);
    return key;
}

void expandKey128(const std::uint8_t* key, AESKeySchedule& schedule) {
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

void expandKey(const std::uint8_t* key, unsigned keyWords, AESKeySchedule& schedule) {
    schedule.rounds = keyWords + 6;
    if (keyWords == 4)
        expandKey128(key, schedule);
    else
        expandAnyKey(key, keyWords, schedule);
}

// --- Blocks

// `count` independent blocks through the rounds side by side, which hides the instructions' latency.
template <int count>
void encryptSideBySide(const RoundKeys& keys, __m128i* state) {
    for (int b = 0; b < count; ++b) state[b] = _mm_xor_si128(state[b], keys.key[0]);
    for (unsigned round = 1; round < keys.rounds; ++round)
        for (int b = 0; b < count; ++b) state[b] = _mm_aesenc_si128(state[b], keys.key[round]);
    for (int b = 0; b < count; ++b) state[b] = _mm_aesenclast_si128(state[b], keys.key[keys.rounds]);
}

template <int count>
void decryptSideBySide(const RoundKeys& inverted, __m128i* state) {
    for (int b = 0; b < count; ++b) state[b] = _mm_xor_si128(state[b], inverted.key[0]);
    for (unsigned round = 1; round < inverted.rounds; ++round)
        for (int b = 0; b < count; ++b) state[b] = _mm_aesdec_si128(state[b], inverted.key[round]);
    for (int b = 0; b < count; ++b) state[b] = _mm_aesdeclast_si128(state[b], inverted.key[inverted.rounds]);
}

template <int count>
void encryptGroup(const RoundKeys& keys, const std::uint8_t* in, std::uint8_t* out) {
    __m128i state[count];
    for (int b = 0; b < count; ++b) state[b] = load(in + 16 * b);
    encryptSideBySide<count>(keys, state);
    for (int b = 0; b < count; ++b) store(out + 16 * b, state[b]);
}

void encryptBlocks(const AESKeySchedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                   std::size_t blocks) {
    const RoundKeys keys(schedule);
    for (; blocks >= 8; blocks -= 8, in += 128, out += 128) encryptGroup<8>(keys, in, out);
    for (; blocks > 0; --blocks, in += 16, out += 16) encryptGroup<1>(keys, in, out);
}

// --- CBC

// Between blocks the chain already holds the next plain block and the first round key: they go in through the
// last round key of the block before, which keeps their XORs out of the chain of dependent instructions.
class EncryptingChain {
  public:
    EncryptingChain(const RoundKeys& keys, const std::uint8_t* iv, __m128i firstBlock)
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
    const RoundKeys& m_keys;
    __m128i m_state;
};

void cbcEncrypt(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
    if (blocks == 0) return;
    const RoundKeys keys(schedule);
    EncryptingChain chain(keys, iv, load(in));
    for (std::size_t i = 1; i < blocks; ++i, out += 16) store(out, chain.step(load(in + 16 * i)));
    store(out, chain.step(_mm_setzero_si128()));
}

// Decrypts `count` blocks and leaves the last cipher block in `chain`.
template <int count>
void decryptGroup(const RoundKeys& inverted, __m128i& chain, const __m128i* cipher, std::uint8_t* out) {
    __m128i state[count];
    for (int b = 0; b < count; ++b) state[b] = cipher[b];
    decryptSideBySide<count>(inverted, state);
    store(out, _mm_xor_si128(state[0], chain));
    for (int b = 1; b < count; ++b) store(out + 16 * b, _mm_xor_si128(state[b], cipher[b - 1]));
    chain = cipher[count - 1];
}

template <int count>
void decryptLoaded(const RoundKeys& inverted, __m128i& chain, const std::uint8_t* in, std::uint8_t* out) {
    __m128i cipher[count];
    for (int b = 0; b < count; ++b) cipher[b] = load(in + 16 * b);
    decryptGroup<count>(inverted, chain, cipher, out);
}

void cbcDecrypt(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                std::uint8_t* out, std::size_t blocks) {
    RoundKeys keys(schedule);
    keys.invert();
    __m128i chain = load(iv);
    for (; blocks >= 8; blocks -= 8, in += 128, out += 128) decryptLoaded<8>(keys, chain, in, out);
    for (; blocks > 0; --blocks, in += 16, out += 16) decryptLoaded<1>(keys, chain, in, out);
}

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

// Plain text as blocks, the last one filled up with PKCS#7 padding (RFC 5652 6.3). Wiped when it goes.
class PaddedBlocks {
  public:
    PaddedBlocks(const std::uint8_t* bytes, std::size_t size) : m_bytes(bytes), m_whole(size / 16) {
        const std::size_t rest = size % 16;
        memset(m_last, static_cast<int>(16 - rest), sizeof m_last);
        if (rest > 0) memcpy(m_last, bytes + 16 * m_whole, rest);
    }
    ~PaddedBlocks() { explicit_bzero(m_last, sizeof m_last); }
    PaddedBlocks(const PaddedBlocks&) = delete;
    PaddedBlocks& operator=(const PaddedBlocks&) = delete;

    std::size_t count() const { return m_whole + 1; }
    // Past the end there are zeros, which the chain may take in after its last block.
    __m128i operator[](std::size_t i) const {
        if (i < m_whole) return load(m_bytes + 16 * i);
        return i == m_whole ? load(m_last) : _mm_setzero_si128();
    }

  private:
    const std::uint8_t* m_bytes;
    std::size_t m_whole;
    std::uint8_t m_last[16];
};

void cbcEncryptToBase64(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                        std::size_t size, char* out) {
    const RoundKeys keys(schedule);
    const PaddedBlocks plain(in, size);
    EncryptingChain chain(keys, iv, plain[0]);
    __m128i group[3];
    std::size_t i = 0;
    for (; i + 3 <= plain.count(); i += 3, out += 64) {
        for (unsigned b = 0; b < 3; ++b) group[b] = chain.step(plain[i + b + 1]);
        encode48(group, out);
    }
    const std::size_t rest = plain.count() - i;
    if (rest == 0) return;
    group[0] = chain.step(plain[i + 1]);
    group[1] = rest == 2 ? chain.step(_mm_setzero_si128()) : _mm_setzero_si128();
    group[2] = _mm_setzero_si128();
    char text[64];
    encode48(group, text);
    memcpy(out, text, rest == 2 ? 44 : 24);
    memcpy(out + (rest == 2 ? 43 : 22), "==", rest == 2 ? 1 : 2);
}

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

bool cbcDecryptFromBase64(const AESKeySchedule& schedule, const std::uint8_t* iv, const char* text,
                          std::uint8_t* out, std::size_t blocks) {
    RoundKeys keys(schedule);
    keys.invert();
    __m128i chain = load(iv), faults = _mm_setzero_si128(), cipher[6];
    for (; blocks >= 6; blocks -= 6, text += 128, out += 96) {
        decode64(text, cipher, faults);
        decode64(text + 64, cipher + 3, faults);
        decryptGroup<6>(keys, chain, cipher, out);
    }
    if (blocks >= 3) {
        decode64(text, cipher, faults);
        decryptGroup<3>(keys, chain, cipher, out);
        blocks -= 3, text += 64, out += 48;
    }
    bool padded = true;
    if (blocks > 0) {
        padded = decodeTail(text, blocks, cipher, faults);
        decryptGroup<1>(keys, chain, cipher, out);
        if (blocks == 2) decryptGroup<1>(keys, chain, cipher + 1, out + 16);
    }
    return padded && !any(faults);
}

}  // namespace

constinit const CipherKernels aesniCipherKernels = {
    "aesni", expandKey, encryptBlocks, cbcEncrypt, cbcDecrypt, cbcEncryptToBase64, cbcDecryptFromBase64,
};

}  // namespace torvel
