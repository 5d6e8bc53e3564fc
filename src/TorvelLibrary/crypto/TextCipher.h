#pragma once  // internal

#include "TorvelLibrary/crypto/CipherKernels.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// Whole messages of the string cipher, for keys of 16, 24 or 32 bytes; any other length stops the process.
// Absent where AESCipher fails.

// The IV text, whose bytes are the IV, and the base64 of the cipher bytes.
using IVText = std::array<char, aesBlockSize>;
std::optional<std::string> encryptText(std::string_view plain, std::string_view key, const IVText& iv,
                                       const CipherKernels& kernels = cipherKernels());

// Reads the base64 of the IV, the first `ivLength` characters of `text`, and that of the cipher bytes, in
// which any further occurrence of the former is left out. What is not UTF-8 is absent as well. Cipher bytes
// that are not base64, or none, stop the process.
std::optional<std::string> decryptText(std::string_view text, std::size_t ivLength, std::string_view key,
                                       const CipherKernels& kernels = cipherKernels());

}  // namespace torvel
