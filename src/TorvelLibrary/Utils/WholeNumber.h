#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <string_view>

namespace torvel {

// A whole decimal number with an optional sign and nothing else, not even spaces; absent for any other text
// and for numbers beyond 64 bits. Any thread.
inline std::optional<std::int64_t> wholeNumber(std::string_view text) {
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

}  // namespace torvel
