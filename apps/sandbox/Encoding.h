#pragma once  // internal

#include <optional>
#include <string>
#include <string_view>

namespace torvel::sandbox {

// Standard base64 on one line, with padding (RFC 4648, section 4).
std::string base64(std::string_view bytes);

// Nothing unless the text is exactly that: no line breaks, no missing padding.
std::optional<std::string> fromBase64(std::string_view text);

std::string hex(std::string_view bytes);

std::string randomBytes(std::size_t count);

// SHA-256 (FIPS 180-4) in lower-case hexadecimal.
std::string sha256(std::string_view bytes);

// A body in a content coding of RFC 9110: "gzip", "deflate" (the zlib form) or "br". Nothing for other names.
std::optional<std::string> contentCoded(std::string_view coding, std::string_view body);

}  // namespace torvel::sandbox
