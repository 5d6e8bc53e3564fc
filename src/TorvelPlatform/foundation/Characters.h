#pragma once

#include <cstddef>
#include <string_view>

// Characters as a reader counts them: extended grapheme clusters (UAX 29). CR LF is one. What is not valid
// UTF-8 counts as replacement characters. Any thread.
namespace torvel {

std::size_t characterCount(std::string_view text);

// The length in bytes of the first `count` characters, or of the whole text when it has no more.
std::size_t characterPrefixLength(std::string_view text, std::size_t count);

}  // namespace torvel
