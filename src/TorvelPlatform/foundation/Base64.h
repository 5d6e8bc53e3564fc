#pragma once

#include "TorvelPlatform/foundation/Data.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace torvel {

// Standard base64 (RFC 4648, 4) on one line, with padding. Any thread.
struct Base64 {
    // The text of the bytes.
    static std::string encode(std::span<const std::uint8_t> bytes);

    // Absent unless the length is a multiple of 4, padding stands exactly at the end and every other
    // character is of the alphabet; no white space. Bits that the last character has to spare need not be
    // zero.
    static std::optional<Data> decode(std::string_view text);
};

}  // namespace torvel
