#include "TorvelPlatform/foundation/PercentEncoding.h"

#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/Data.h"

#include <algorithm>

namespace torvel {
namespace {

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::optional<std::string> addingPercentEncoding(std::string_view text, const CharacterSet& allowed) {
    if (!isValidUTF8(text)) return std::nullopt;
    return percentEncodedBytes(text, allowed);
}

std::optional<std::string> removingPercentEncoding(std::string_view text) {
    std::optional<std::string> decoded = percentDecodedBytes(text);
    if (decoded && !isValidUTF8(*decoded)) decoded.reset();
    return decoded;
}

std::string percentEncodedBytes(std::string_view bytes, const CharacterSet& allowed) {
    static constexpr char digits[] = "0123456789ABCDEF";
    const auto stays = [&allowed](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x80 && allowed.contains(byte);
    };
    std::string result;
    result.reserve(bytes.size());
    for (auto rest = bytes.begin();;) {
        const auto encoded = std::find_if_not(rest, bytes.end(), stays);
        result.append(rest, encoded);
        if (encoded == bytes.end()) return result;
        const auto byte = static_cast<unsigned char>(*encoded);
        result += {'%', digits[byte >> 4], digits[byte & 15]};
        rest = encoded + 1;
    }
}

std::optional<std::string> percentDecodedBytes(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (true) {
        const std::size_t escape = text.find('%');
        result += text.substr(0, escape);
        if (escape == std::string_view::npos) return result;
        text.remove_prefix(escape + 1);
        const int high = text.size() < 2 ? -1 : hexDigit(text[0]);
        const int low = text.size() < 2 ? -1 : hexDigit(text[1]);
        if (high < 0 || low < 0) return std::nullopt;
        result += static_cast<char>(high * 16 + low);
        text.remove_prefix(2);
    }
}

}  // namespace torvel
