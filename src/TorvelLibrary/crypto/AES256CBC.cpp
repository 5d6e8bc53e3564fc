#include "TorvelLibrary/crypto/AES256CBC.h"

#include "TorvelLibrary/crypto/RandomText.h"
#include "TorvelLibrary/crypto/TextCipher.h"
#include "TorvelPlatform/foundation/Characters.h"

#include <iostream>

namespace torvel {
namespace {

constexpr std::size_t passwordLength = 16;
constexpr std::size_t encodedIVLength = 24;
constexpr std::size_t shortestCipherText = 17;

}  // namespace

std::optional<std::string> AES256CBC::encryptString(std::string_view str, std::string_view password) {
    if (str.empty() || characterCount(password) != passwordLength) return std::nullopt;
    auto text = encryptText(str, password, RandomText::makeIV());
    if (text) return text;
    std::cout << "an error occured while encrypting" << std::endl;
    return std::nullopt;
}

std::optional<std::string> AES256CBC::decryptString(std::string_view str, std::string_view password) {
    if (characterCount(password) != passwordLength) return std::nullopt;
    auto plain = decryptAtOnce(str, password);
    if (!plain) {
        const CharacterPrefix iv = characterPrefix(str, encodedIVLength);
        if (iv.count < shortestCipherText) return std::nullopt;
        plain = decryptInSteps(str, str.substr(0, iv.length), password);
    }
    if (!plain) std::cout << "an error occured while decrypting" << std::endl;
    return plain;
}

std::string AES256CBC::generatePassword() { return randomText(16, false, false); }

std::string AES256CBC::randomText(std::int64_t length, bool justLowerCase, bool whitespace) {
    return RandomText::make(length, justLowerCase, whitespace);
}

}  // namespace torvel
