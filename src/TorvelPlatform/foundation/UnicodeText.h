#pragma once  // internal

#include <string>
#include <string_view>

#include <unicode/unistr.h>

namespace torvel {

// Between UTF-8 and ICU's own text. Malformed bytes become U+FFFD.
inline icu::UnicodeString unicodeText(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

std::string utf8Text(const icu::UnicodeString& text);

}  // namespace torvel
