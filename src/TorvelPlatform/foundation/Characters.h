#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Characters as a reader counts them: extended grapheme clusters (UAX 29). CR LF is one. What is not valid
// UTF-8 counts as replacement characters. Any thread.
namespace torvel {

// How many characters a text has.
std::size_t characterCount(std::string_view text);

// The first `count` characters, or all of the text when it has no more.
struct CharacterPrefix {
    std::size_t count = 0;   // in characters
    std::size_t length = 0;  // in bytes
};
// The prefix of so many characters.
CharacterPrefix characterPrefix(std::string_view text, std::size_t count);

// The characters, each a part of the text.
std::vector<std::string_view> characters(std::string_view text);

// The Unicode scalar values that make up a text, U+FFFD where it is not valid UTF-8.
std::u32string unicodeScalars(std::string_view text);

}  // namespace torvel
