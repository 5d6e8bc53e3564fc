#pragma once  // internal

#include <cstddef>
#include <cstdint>

// The inner loops of the string cipher, as one table a tier of processors. This header stays plain: it is
// included by sources that are compiled for newer processors than the rest, and an inline function or
// template of theirs could be the copy that the linker keeps for everyone.
namespace torvel {

inline constexpr std::size_t aesBlockSize = 16;

// 4, 6 or 8 words of 32 bits (FIPS-197 5.2).
struct AESKey {
    const std::uint8_t* bytes;
    unsigned words;
};

// Round keys as FIPS-197 writes them (bytes of w[0], w[1], ...), for encryption. Whoever holds one wipes it.
struct AESKeySchedule {
    alignas(16) std::uint8_t roundKeys[15 * aesBlockSize];
    unsigned rounds;  // 10, 12 or 14
};

// What a base64 cipher text turned out to be.
enum class DecryptedText { notBase64, ascii, otherBytes };

// Buffers may stand at any address, and input and output do not overlap.
struct CipherKernels {
    const char* name;

    void (*expandKey)(AESKey key, AESKeySchedule& schedule);

    // Every block by itself.
    void (*encryptBlocks)(const AESKeySchedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                          std::size_t blocks);

    // CBC over whole blocks (SP 800-38A 6.2); `iv` is one block.
    void (*cbcEncrypt)(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                       std::uint8_t* out, std::size_t blocks);
    void (*cbcDecrypt)(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                       std::uint8_t* out, std::size_t blocks);

    // A whole message in one pass, from the key to the base64; null where a tier gains nothing by it. What
    // they write may run over by at most `slack` bytes of no use, which spares them short last stores.
    static constexpr std::size_t slack = 64;

    // Writes the padded base64 text of `size / 16 + 1` blocks, the last of them filled by PKCS#7.
    void (*encryptToBase64)(AESKey key, const std::uint8_t* iv, const std::uint8_t* in, std::size_t size,
                            char* out);
    // Takes the base64 texts of the IV, 24 characters that end in "==", and of `blocks` blocks, of the length
    // that RFC 4648 gives it, and writes all of them, padding included, which counts for ascii as well.
    // After notBase64 `out` is of no use.
    DecryptedText (*decryptFromBase64)(AESKey key, const char* ivText, const char* text, std::uint8_t* out,
                                       std::size_t blocks);
};

// The tiers that this processor runs, fastest first, ended by a null pointer. The last one is always the
// portable tier.
const CipherKernels* const* supportedCipherKernels();

// The fastest of them.
const CipherKernels& cipherKernels();

extern const CipherKernels portableCipherKernels;

}  // namespace torvel
