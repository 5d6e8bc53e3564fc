#pragma once  // internal

#include <cstddef>
#include <cstdint>

// The inner loops of the string cipher, as one table a tier of processors. This header stays plain: it is
// included by sources that are compiled for newer processors than the rest, and an inline function or
// template of theirs could be the copy that the linker keeps for everyone.
namespace torvel {

inline constexpr std::size_t aesBlockSize = 16;

// Round keys as FIPS-197 writes them (bytes of w[0], w[1], ...), for encryption. Whoever holds one wipes it.
struct AESKeySchedule {
    alignas(16) std::uint8_t roundKeys[15 * aesBlockSize];
    unsigned rounds;  // 10, 12 or 14
};

// Buffers may stand at any address, and input and output do not overlap.
struct CipherKernels {
    const char* name;

    // `keyWords` is 4, 6 or 8 (32-bit words, FIPS-197 5.2).
    void (*expandKey)(const std::uint8_t* key, unsigned keyWords, AESKeySchedule& schedule);

    // Every block by itself.
    void (*encryptBlocks)(const AESKeySchedule& schedule, const std::uint8_t* in, std::uint8_t* out,
                          std::size_t blocks);

    // CBC over whole blocks (SP 800-38A 6.2); `iv` is one block.
    void (*cbcEncrypt)(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                       std::uint8_t* out, std::size_t blocks);
    void (*cbcDecrypt)(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                       std::uint8_t* out, std::size_t blocks);

    // The same with PKCS#7 padding and base64 in one pass; null where a tier gains nothing by it.
    // Encrypting writes exactly the padded base64 text of `size / 16 + 1` blocks.
    void (*cbcEncryptToBase64)(const AESKeySchedule& schedule, const std::uint8_t* iv, const std::uint8_t* in,
                               std::size_t size, char* out);
    // Decrypting takes the base64 text of `blocks` blocks, of the length that RFC 4648 gives it, and writes
    // all of them, padding included. False when the text is not base64; `out` is then of no use.
    bool (*cbcDecryptFromBase64)(const AESKeySchedule& schedule, const std::uint8_t* iv, const char* text,
                                 std::uint8_t* out, std::size_t blocks);
};

// The tiers that this processor runs, fastest first, ended by a null pointer. The last one is always the
// portable tier.
const CipherKernels* const* supportedCipherKernels();

// The fastest of them.
inline const CipherKernels& cipherKernels() { return **supportedCipherKernels(); }

extern const CipherKernels portableCipherKernels;

}  // namespace torvel
