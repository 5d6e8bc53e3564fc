#include "TorvelLibrary/crypto/AES256CBC.h"

#include "TorvelLibrary/crypto/AESCipher.h"
#include "TorvelLibrary/crypto/RandomSource.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/Characters.h"
#include "TorvelPlatform/foundation/Data.h"

#include <algorithm>
#include <array>
#include <iostream>

namespace torvel {
namespace {

constexpr std::size_t passwordLength = 16;
constexpr std::size_t ivTextLength = 16;
constexpr std::size_t encodedIVLength = 24;
constexpr std::size_t shortestCipherText = 17;

// `text` behind its prefix without any further occurrence of it, literally and from left to right.
std::string removingEvery(std::string_view prefix, std::string_view text) {
    std::string kept;
    text.remove_prefix(prefix.size());
    for (std::size_t found; (found = text.find(prefix)) != std::string_view::npos;) {
        kept += text.substr(0, found);
        text.remove_prefix(found + prefix.size());
    }
    kept += text;
    return kept;
}

// The same without a search, right for a text that is base64 once this is done: a prefix that ends in "=="
// stands nowhere in such a text but at its end. Absent when the prefix ends otherwise: one that ends in a
// single "=" may also stand right before the last "=" of a text.
std::optional<std::string_view> trimmingEvery(std::string_view prefix, std::string_view text) {
    if (!prefix.ends_with("==")) return std::nullopt;
    text.remove_prefix(prefix.size());
    while (text.ends_with(prefix)) text.remove_suffix(prefix.size());
    return text;
}

std::optional<std::string> aesDecrypt(std::string_view text, std::string_view prefix, std::string_view key) {
    const std::optional<Data> iv = Base64::decode(prefix);
    AESCipher cipher(key, iv ? std::optional<std::string_view>(iv->raw()) : std::nullopt);
    std::optional<AESCipher::Plain> plain;
    if (const auto trimmed = trimmingEvery(prefix, text)) plain = cipher.decryptWellFormed(*trimmed);
    if (!plain) {
        auto outcome = cipher.decryptFromBase64(removingEvery(prefix, text));
        if (!outcome) return std::nullopt;
        plain = std::move(outcome).value();
    }
    if (!plain->isASCII && !isValidUTF8(plain->text)) return std::nullopt;
    return std::move(plain->text);
}

// Every class of characters has 130 of the draws, which 26 letters and 10 digits divide evenly.
constexpr std::uint16_t drawsPerClass = 130;

char character(std::uint16_t draw) {
    const std::uint16_t kind = draw / drawsPerClass, within = draw % drawsPerClass;
    const int letter = within / (drawsPerClass / 26), digit = within / (drawsPerClass / 10);
    const int lower = 'a' + letter, upper = 'A' + letter;
    return static_cast<char>(kind == 0 ? lower : kind == 1 ? upper : kind == 2 ? '0' + digit : ' ');
}

// All at once, which compilers make vectors of: no branch and no table depends on the draws for a password.
std::array<char, 16> characters(const RandomSource::Batch& draws) {
    std::array<char, 16> text;
    std::transform(draws.begin(), draws.end(), text.begin(), character);
    return text;
}

}  // namespace

std::optional<std::string> AES256CBC::encryptString(std::string_view str, std::string_view password) {
    if (str.empty() || characterCount(password) != passwordLength) return std::nullopt;
    std::string ivText = randomText(ivTextLength, false, false);
    std::array<char, ivTextLength> iv;
    ivText.copy(iv.data(), iv.size());
    auto text =
        AESCipher(password, std::string_view(iv.data(), iv.size())).encryptToBase64(std::move(ivText), str);
    if (text) return std::move(text).value();
    std::cout << "an error occured while encrypting" << std::endl;
    return std::nullopt;
}

std::optional<std::string> AES256CBC::decryptString(std::string_view str, std::string_view password) {
    const std::string_view prefix = str.substr(0, characterPrefixLength(str, encodedIVLength));
    if (characterCount(prefix) < shortestCipherText || characterCount(password) != passwordLength)
        return std::nullopt;
    auto plain = aesDecrypt(str, prefix, password);
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
