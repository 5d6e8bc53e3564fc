#include "TorvelLibrary/crypto/AES256CBC.h"

#include "TorvelLibrary/crypto/RandomSource.h"
#include "TorvelLibrary/crypto/TextCipher.h"
#include "TorvelPlatform/foundation/Characters.h"

#include <algorithm>
#include <array>
#include <iostream>

namespace torvel {
namespace {

constexpr std::size_t passwordLength = 16;
constexpr std::size_t encodedIVLength = 24;
constexpr std::size_t shortestCipherText = 17;

// Every class of characters has 130 of the draws, which 26 letters and 10 digits divide evenly.
constexpr std::uint16_t drawsPerClass = 130;

// In 16 bits as well, so that vectors hold it.
std::uint16_t character(std::uint16_t draw) {
    const bool isUpper = draw >= drawsPerClass, isDigit = draw >= 2 * drawsPerClass;
    const auto within = static_cast<std::uint16_t>(draw - drawsPerClass * (isUpper + isDigit));
    const int letter = (isUpper ? 'A' : 'a') + within / (drawsPerClass / 26);
    const int other = draw >= 3 * drawsPerClass ? ' ' : '0' + within / (drawsPerClass / 10);
    return static_cast<std::uint16_t>(isDigit ? other : letter);
}

// All at once: no branch and no table depends on the draws for a password.
std::array<char, 16> characters(const RandomSource::Batch& draws) {
    RandomSource::Batch wide;
    std::array<char, 16> text;
    std::transform(draws.begin(), draws.end(), wide.begin(), character);
    std::transform(wide.begin(), wide.end(), text.begin(),
                   [](std::uint16_t c) { return static_cast<char>(c); });
    return text;
}

}  // namespace

std::optional<std::string> AES256CBC::encryptString(std::string_view str, std::string_view password) {
    if (str.empty() || characterCount(password) != passwordLength) return std::nullopt;
    auto text =
        encryptText(str, password, characters(RandomSource::ofThisThread().batchBelow(3 * drawsPerClass)));
    if (text) return text;
    std::cout << "an error occured while encrypting" << std::endl;
    return std::nullopt;
}

std::optional<std::string> AES256CBC::decryptString(std::string_view str, std::string_view password) {
    const CharacterPrefix iv = characterPrefix(str, encodedIVLength);
    if (iv.count < shortestCipherText || characterCount(password) != passwordLength) return std::nullopt;
    auto plain = decryptText(str, iv.length, password);
    if (!plain) std::cout << "an error occured while decrypting" << std::endl;
    return plain;
}

std::string AES256CBC::generatePassword() { return randomText(16, false, false); }

std::string AES256CBC::randomText(std::int64_t length, bool justLowerCase, bool whitespace) {
    if (length <= 0) return {};
    RandomSource& source = RandomSource::ofThisThread();
    const auto draws = static_cast<std::uint16_t>(drawsPerClass * (justLowerCase ? 1 : whitespace ? 4 : 3));
    std::string text(static_cast<std::size_t>(length), '\0');
    std::size_t size = 0;
    while (size < text.size()) {
        for (const char next : characters(source.batchBelow(draws))) {
            if (size == text.size()) break;
            text[size] = next;
            const bool secondSpace = next == ' ' && size > 0 && text[size - 1] == ' ';
            size += secondSpace ? 0 : 1;
        }
    }
    return text;
}

}  // namespace torvel
