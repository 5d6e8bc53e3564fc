#include "TorvelPlatform/foundation/PercentEncoding.h"

#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/Data.h"

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
    std::string result;
    result.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80 && allowed.contains(byte)) {
            result += c;
        } else {
            result += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return result;
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
