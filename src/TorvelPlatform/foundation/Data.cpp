#include "TorvelPlatform/foundation/Data.h"

#include <simdjson.h>

namespace torvel {

Data::Data(std::span<const std::uint8_t> bytes)
    : m_bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size()) {}

std::span<const std::uint8_t> Data::bytes() const {
    return {reinterpret_cast<const std::uint8_t*>(m_bytes.data()), m_bytes.size()};
}

std::optional<std::string> Data::utf8Text() const {
    if (!isValidUTF8(m_bytes)) return std::nullopt;
    return m_bytes;
}

bool isValidUTF8(std::string_view bytes) { return simdjson::validate_utf8(bytes.data(), bytes.size()); }

}  // namespace torvel
