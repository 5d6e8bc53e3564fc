#include "TorvelLibrary/crypto/AES256CBC.h"

#include "TorvelLibrary/crypto/AESCipher.h"
#include "TorvelLibrary/crypto/RandomSource.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/Characters.h"
#include "TorvelPlatform/foundation/Data.h"

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
    return kept += text;
}

// The same, without searching, for a text that is base64 once this is done: a prefix that is base64 and ends
// in
// "=" can stand nowhere else in it than at the end. Absent when the prefix is not like that.
std::optional<std::string_view> trimmingEvery(std::string_view prefix, std::string_view text) {
    if (!prefix.ends_with('=')) return std::nullopt;
    text.remove_prefix(prefix.size());
    while (text.ends_with(prefix)) text.remove_suffix(prefix.size());
    return text;
}

std::optional<std::string> aesDecrypt(std::string_view text, std::string_view prefix, std::string_view key) {
    const std::optional<Data> iv = Base64::decode(prefix);
    AESCipher cipher(key, iv ? std::optional<std::string_view>(iv->raw()) : std::nullopt);
    std::optional<std::string> plain;
    if (const auto trimmed = trimmingEvery(prefix, text)) plain = cipher.decryptWellFormed(*trimmed);
    if (!plain) {
        auto outcome = cipher.decryptFromBase64(removingEvery(prefix, text));
        if (outcome) plain = std::move(outcome).value();
    }
    if (plain && !isValidUTF8(*plain)) plain.reset();
    return plain;
}

// Every class of characters has 130 of the draws, which 26 letters and 10 digits divide evenly.
constexpr std::uint32_t drawsPerClass = 130;

char character(std::uint32_t draw) {
    constexpr char first[] = {'a', 'A', '0', ' '};
    constexpr std::uint32_t count[] = {26, 26, 10, 1};
    const std::uint32_t kind = draw / drawsPerClass, within = draw % drawsPerClass;
    return static_cast<char>(first[kind] + static_cast<char>(within * count[kind] / drawsPerClass));
}

}  // namespace

std::optional<std::string> AES256CBC::encryptString(std::string_view str, std::string_view password) {
    if (str.empty() || characterCount(password) != passwordLength) return std::nullopt;
    std::string ivText = randomText(ivTextLength, false, false);
    const std::string iv = ivText;
    auto text = AESCipher(password, iv).encryptToBase64(std::move(ivText), str);
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
    std::string text;
    if (length <= 0) return text;
    RandomSource& source = RandomSource::ofThisThread();
    const std::uint32_t draws = justLowerCase ? drawsPerClass : (whitespace ? 4 : 3) * drawsPerClass;
    text.reserve(static_cast<std::size_t>(length));
    while (text.size() < static_cast<std::size_t>(length)) {
        const char next = character(source.below(draws));
        if (next != ' ' || !text.ends_with(' ')) text += next;
    }
    return text;
}

}  // namespace torvel
