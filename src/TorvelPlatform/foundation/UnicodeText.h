#pragma once  // internal

#include <string>
#include <string_view>

#include <unicode/unistr.h>

namespace torvel {

// Between UTF-8 and ICU's own text. Malformed bytes become U+FFFD.
inline icu::UnicodeString unicodeText(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

inline std::string utf8Text(const icu::UnicodeString& text) {
    const std::u16string_view units(text.getBuffer(), static_cast<std::size_t>(text.length()));
    std::string out(units.size(), '\0');
    char16_t all = 0;
    for (std::size_t i = 0; i < units.size(); ++i) {
        all |= units[i];
        out[i] = static_cast<char>(units[i]);
    }
    if (all < 0x80) return out;  // most texts are ASCII
    out.clear();
    return text.toUTF8String(out);
}

}  // namespace torvel
