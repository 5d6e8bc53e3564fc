#pragma once  // internal

#include "TorvelLibrary/crypto/CipherKernels.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// Whole messages of the string cipher, for keys of 16, 24 or 32 bytes; any other length stops the process.

// The IV text, whose bytes are the IV, and the base64 of the cipher bytes.
using IVText = std::array<char, aesBlockSize>;
std::optional<std::string> encryptText(std::string_view plain, std::string_view key, const IVText& iv,
                                       const CipherKernels& kernels = cipherKernels());

// Reads the common case in one pass: 24 characters that are the base64 of a whole IV, and then that of whole
// blocks, of which every further occurrence of the IV's is left out. Absent when the text is anything else,
// in what it says as well, or the processor has no such pass: decryptInSteps tells which.
std::optional<std::string> decryptAtOnce(std::string_view text, std::string_view key,
                                         const CipherKernels& kernels = cipherKernels());

// Reads any text that starts with the base64 of an IV, `ivText`. Absent where AESCipher fails, and when the
// result is not UTF-8. Cipher bytes that are not base64, or none, stop the process.
std::optional<std::string> decryptInSteps(std::string_view text, std::string_view ivText,
                                          std::string_view key,
                                          const CipherKernels& kernels = cipherKernels());

}  // namespace torvel
