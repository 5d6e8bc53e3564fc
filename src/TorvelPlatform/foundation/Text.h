#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace torvel {

// All of it: any thread.

// A table by text that can be asked with any kind of text without making a std::string.
struct TextHash {
    // Lets a table be asked with any kind of text.
    using is_transparent = void;
    // The hash of a text.
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
};

// Values of one type by text.
template <class T>
using ByText = std::unordered_map<std::string, T, TextHash, std::equal_to<>>;

// The text with another in the place of every occurrence of `part`: literal, left to right, what stands
// together afterwards is not looked at again. An empty `part` changes nothing.
std::string replacingOccurrences(std::string_view text, std::string_view part, std::string_view with);
// The text without every occurrence of `part`.
inline std::string removingOccurrences(std::string_view text, std::string_view part) {
    return replacingOccurrences(text, part, "");
}

// In upper case, by the rules of no language in particular.
std::string uppercased(std::string_view text);

// The number that a whole text is in plain decimal notation: a sign or none, digits with at most one dot, an
// exponent or none ("-1234.5", "+.5", "1e3"), whatever the locale. Absent for anything else, a space, a
// grouping separator or a value beyond the range of a double included.
std::optional<double> decimalNumber(std::string_view text);

}  // namespace torvel
