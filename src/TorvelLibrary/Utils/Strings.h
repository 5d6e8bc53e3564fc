#pragma once

#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/CharacterSet.h"

#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// Texts by name.
struct String {
    // The text that the name says.
    static constexpr std::string_view empty = "";
    static constexpr std::string_view space = " ";
    static constexpr std::string_view tabSpace = "\t";
    static constexpr std::string_view newLine = "\n";
    static constexpr std::string_view colon = ":";
    static constexpr std::string_view hyphen = "-";
    static constexpr std::string_view percentage = "%";
    static constexpr std::string_view ampersand = "&";
    static constexpr std::string_view asterisk = "*";
    static constexpr std::string_view openingBracket = "(";
    static constexpr std::string_view closingBracket = ")";
    static constexpr std::string_view plus = "+";
    static constexpr std::string_view comma = ",";
    static constexpr std::string_view dot = ".";
    static constexpr std::string_view question = "?";
    static constexpr std::string_view singleQuote = "'";
    static constexpr std::string_view doubleQuote = "\"";
    static constexpr std::string_view pipe = "|";
    static constexpr std::string_view underscore = "_";
    static constexpr std::string_view equalSign = "=";

    // The texts with the separator between them.
    static std::string format(std::initializer_list<std::string_view> strings,
                              std::string_view withSeparator);
};

// The initials of a name, in upper case: the first character of every part between spaces.
std::string getFirstCharacters(std::string_view text);

// --- The characters whose every Unicode scalar passes, in order. Any thread. ---

// Whether a scalar value passes.
using ScalarFilter = std::function<bool(char32_t scalar)>;
// The characters that pass a filter of the caller's.
std::string filterCharacters(std::string_view text, const ScalarFilter& unicodeScalarsFilter);

// The filter is given the union of the sets. Without a set the text stays as it is.
using ScalarSetFilter = std::function<bool(const CharacterSet& charSet, char32_t scalar)>;
std::string filterCharacters(std::string_view text, const std::vector<CharacterSet>& definedIn,
                             const ScalarSetFilter& unicodeScalarsFilter);

// Those in any of the sets.
std::string onlyCharacters(std::string_view text, const std::vector<CharacterSet>& charSets);
std::string onlyNumbers(std::string_view text, const CharacterSet& charSet);

// --- Configuration ---

// The bundle's text for a key in a table; the key itself when there is none.
std::string getConfigValue(std::string_view key, const Bundle& targetBundle, std::string_view table);

}  // namespace torvel
