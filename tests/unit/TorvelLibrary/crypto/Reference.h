#pragma once

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include <openssl/evp.h>

// What the tests compare with: OpenSSL's AES and base64.
namespace torvel::reference {

inline const unsigned char* bytePointer(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

inline std::string cbc(bool encrypting, bool padding, std::string_view key, std::string_view iv,
                       std::string_view in) {
    const EVP_CIPHER* const type = key.size() == 16   ? EVP_aes_128_cbc()
                                   : key.size() == 24 ? EVP_aes_192_cbc()
                                                      : EVP_aes_256_cbc();
    const std::unique_ptr<EVP_CIPHER_CTX, decltype(&EVP_CIPHER_CTX_free)> context(EVP_CIPHER_CTX_new(),
                                                                                  &EVP_CIPHER_CTX_free);
    EVP_CipherInit_ex(context.get(), type, nullptr, bytePointer(key), bytePointer(iv), encrypting);
    EVP_CIPHER_CTX_set_padding(context.get(), padding);
    std::string out(in.size() + 16, '\0');
    auto* const start = reinterpret_cast<unsigned char*>(out.data());
    int size = 0, rest = 0;
    EVP_CipherUpdate(context.get(), start, &size, bytePointer(in), static_cast<int>(in.size()));
    EVP_CipherFinal_ex(context.get(), start + size, &rest);
    out.resize(static_cast<std::size_t>(size + rest));
    return out;
}

inline std::string encrypt(std::string_view key, std::string_view iv, std::string_view plain) {
    return cbc(true, true, key, iv, plain);
}

// Cipher bytes whose plain bytes are exactly these, a multiple of 16.
inline std::string encryptUnpadded(std::string_view key, std::string_view iv, std::string_view plain) {
    return cbc(true, false, key, iv, plain);
}

inline std::string base64(std::string_view bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int size = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()), bytePointer(bytes),
                                     static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(size));
    return text;
}

// What RFC 4648's alphabet, padded at the end and with any spare bits, stands for.
inline std::optional<std::string> fromBase64(std::string_view text) {
    constexpr auto* alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const std::size_t end = std::min(text.find_first_not_of(alphabet), text.size());
    const std::string_view padding = text.substr(end);
    if (text.size() % 4 != 0 || !(padding.empty() || padding == "=" || padding == "==")) return std::nullopt;
    std::string bytes(text.size() / 4 * 3, '\0');
    EVP_DecodeBlock(reinterpret_cast<unsigned char*>(bytes.data()), bytePointer(text),
                    static_cast<int>(text.size()));
    bytes.resize(bytes.size() - padding.size());
    return bytes;
}

// Whole blocks opened, less as many bytes as the last one says, if there are so many.
inline std::string openedLeniently(std::string_view key, std::string_view iv, std::string_view blocks) {
    std::string plain = cbc(false, false, key, iv, blocks);
    const std::size_t padding = plain.empty() ? 0 : static_cast<unsigned char>(plain.back());
    if (padding <= plain.size()) plain.resize(plain.size() - padding);
    return plain;
}

// The same bytes in every run.
inline std::string bytes(std::size_t size, unsigned seed) {
    std::mt19937 generator(seed);
    std::string result(size, '\0');
    for (char& byte : result) byte = static_cast<char>(generator());
    return result;
}

}  // namespace torvel::reference
