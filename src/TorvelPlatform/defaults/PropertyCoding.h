#pragma once  // internal

#include "TorvelPlatform/defaults/PropertyValue.h"

#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// Property values as bytes: a kind byte, then
//   a Boolean, integer, float, double or date   its fixed width, little endian (dates: ns since 1970)
//   a text, data or URL                         its length, its bytes
//   an array                                    its count, its elements
//   a dictionary                                its count; length and bytes of a key, its value; keys
//   ascending
// Lengths and counts are base-128 numbers, low groups first, in their shortest form. One value has one
// encoding.

// Absent when the value nests deeper than 64 levels or takes more than 64 MiB.
std::optional<std::string> encodeProperty(const PropertyValue& value);
// Absent unless the bytes are exactly one value in its one encoding, within the same bounds.
std::optional<PropertyValue> decodeProperty(std::string_view bytes);

// The lengths of the encoding.
void appendLength(std::string& bytes, std::size_t length);
// Takes a length and that many bytes off the front; absent when they are not there.
std::optional<std::string_view> takeText(std::string_view& bytes);

}  // namespace torvel
