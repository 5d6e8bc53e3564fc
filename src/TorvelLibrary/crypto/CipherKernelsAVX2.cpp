#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelLibrary/crypto/CipherKernelsX86.h"
#include "TorvelLibrary/crypto/CipherNarrowX86.h"

// AES instructions with AVX2 base64: half the instructions of the AES-NI tier's, which decryption waits for.
namespace torvel {
namespace {

__m256i twice(__m128i value) { return _mm256_broadcastsi128_si256(value); }

// Takes two steps at a time.
class Decoder : public NarrowDecoder {
  public:
    void step(unsigned vector, const char* text, __m128i* blocks) {
        if (vector % 2 != 0) return;
        const __m256i next =
            decode32(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(text + 16 * vector)));
        if (vector % 4 == 2) join(next, blocks + vector / 4 * 3);
        m_before = next;
    }
    template <unsigned vectors>
    void decode(const char* text, __m128i* blocks) {
        for (unsigned i = 0; i < vectors; ++i) step(i, text, blocks);
    }
    bool failed() const { return NarrowDecoder::failed() || _mm256_movemask_epi8(m_wideFaults) != 0; }

  private:
    // As NarrowDecoder does, in both halves.
    static __m256i place(__m128i byLowNibble, __m256i text) {
        return _mm256_avg_epu8(_mm256_shuffle_epi8(twice(byLowNibble), text), _mm256_srli_epi32(text, 3));
    }
    __m256i decode32(__m256i text) {
        const __m256i sextets =
            _mm256_adds_epi8(_mm256_shuffle_epi8(twice(delta()), place(lowForDelta(), text)), text);
        const __m256i checked =
            _mm256_adds_epi8(_mm256_shuffle_epi8(twice(check()), place(lowForCheck(), text)), text);
        m_wideFaults = _mm256_or_si256(m_wideFaults, checked);
        const __m256i pairs = _mm256_maddubs_epi16(sextets, _mm256_set1_epi32(0x01400140));
        const __m256i triples = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00011000));
        return _mm256_shuffle_epi8(triples, twice(orderOfBytes()));
    }

    // Twice 24 bytes as three blocks; the fourth word of a half is zero.
    void join(__m256i next, __m128i* blocks) {
        const __m256i a = _mm256_permutevar8x32_epi32(m_before, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 3));
        const __m256i b = _mm256_permutevar8x32_epi32(next, _mm256_setr_epi32(3, 3, 0, 1, 2, 4, 5, 6));
        blocks[0] = _mm256_castsi256_si128(a);
        blocks[1] = _mm_or_si128(_mm256_extracti128_si256(a, 1), _mm256_castsi256_si128(b));
        blocks[2] = _mm256_extracti128_si256(b, 1);
    }

    __m256i m_before = _mm256_setzero_si256();
    __m256i m_wideFaults = _mm256_setzero_si256();
};

void encryptToBase64(AESKey key, const std::uint8_t* iv, const std::uint8_t* in, std::size_t size,
                     char* out) {
    encryptToBase64By(encode48, key, iv, in, size, out);
}

}  // namespace

constinit const CipherKernels avx2CipherKernels = {
    "avx2",
    aesni::expandKey,
    aesni::encryptBlocks,
    aesni::cbcEncrypt,
    aesni::cbcDecrypt,
    encryptToBase64,
    decryptFromBase64By<Decoder>,
};

}  // namespace torvel
