#pragma once  // internal

#include <string>
#include <string_view>

#include <unicode/unistr.h>
#include <unicode/ustring.h>

namespace torvel {

// Between UTF-8 and ICU's own text. Malformed bytes become U+FFFD.
inline icu::UnicodeString unicodeText(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

inline std::string utf8Text(const icu::UnicodeString& text) {
    // A short text, an amount say, takes ICU's general conversion longer than its formatting should.
    constexpr std::int32_t shortLength = 64;
    char buffer[3 * shortLength];
    std::string out;
    if (text.length() > shortLength) return text.toUTF8String(out);
    std::int32_t length = 0;
    UErrorCode error = U_ZERO_ERROR;
    u_strToUTF8WithSub(buffer, sizeof buffer, &length, text.getBuffer(), text.length(), 0xFFFD, nullptr,
                       &error);
    return out.assign(buffer, static_cast<std::size_t>(length));
}

}  // namespace torvel
