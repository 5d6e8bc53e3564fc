#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace torvel {

class CharacterSet;

// All of it: any thread.

// Replaces every byte of a character outside `allowed`, and every non-ASCII byte, by %XX (upper-case hex).
// "%" itself is escaped unless allowed, so an already escaped text is escaped again. Absent when `text` is
// not valid UTF-8.
std::optional<std::string> addingPercentEncoding(std::string_view text, const CharacterSet& allowed);

// Decodes every %XX. Absent when an escape is malformed or the result is not valid UTF-8.
std::optional<std::string> removingPercentEncoding(std::string_view text);

// The same two for bytes in no particular encoding, such as file paths.
std::string percentEncodedBytes(std::string_view bytes, const CharacterSet& allowed);
std::optional<std::string> percentDecodedBytes(std::string_view text);

}  // namespace torvel
