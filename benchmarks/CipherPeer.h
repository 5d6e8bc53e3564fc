#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

// What the string cipher is measured against.
namespace torvel::bench {

// The same two operations as a programmer writes them with OpenSSL: EVP with its own base64, a search for the
// prefix, a scalar check of the UTF-8.
namespace ordinary {
std::optional<std::string> encryptString(std::string_view text, std::string_view password);
std::optional<std::string> decryptString(std::string_view text, std::string_view password);
}  // namespace ordinary

// AES-128 with nothing around it: the key's schedule and the blocks, by the processor's instructions.
namespace bare {
bool hasAES();
bool hasVAES();
// CBC encryption, one block after the other.
void encrypt(const std::uint8_t* key, const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out,
             std::size_t blocks);
// CBC decryption, as many blocks side by side as the registers hold: 128 bits wide, 512 bits wide.
void decrypt128(const std::uint8_t* key, const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out,
                std::size_t blocks);
void decrypt512(const std::uint8_t* key, const std::uint8_t* iv, const std::uint8_t* in, std::uint8_t* out,
                std::size_t blocks);
}  // namespace bare

}  // namespace torvel::bench
