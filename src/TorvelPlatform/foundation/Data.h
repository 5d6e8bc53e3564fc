#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

namespace torvel {

// A byte buffer with value semantics. Its storage is a std::string, so that moving between texts and
// bytes (JSON, cipher texts, bodies) copies nothing. A value; threads may share one that none changes.
class Data {
  public:
    Data() = default;
    // The bytes of a text, of a C string up to its end, or as numbers.
    explicit Data(std::string bytes) : m_bytes(std::move(bytes)) {}
    explicit Data(std::string_view bytes) : m_bytes(bytes) {}
    explicit Data(const char* text) : m_bytes(text) {}
    explicit Data(std::span<const std::uint8_t> bytes);

    // In bytes.
    std::size_t size() const { return m_bytes.size(); }
    bool empty() const { return m_bytes.empty(); }

    // The bytes as numbers, valid as long as this object is neither changed nor destroyed.
    std::span<const std::uint8_t> bytes() const;

    // The raw bytes as characters; no encoding is implied or checked.
    const std::string& raw() const& { return m_bytes; }
    std::string raw() && { return std::move(m_bytes); }

    // The bytes as text, absent when they are not valid UTF-8 (RFC 3629).
    std::optional<std::string> utf8Text() const;

    bool operator==(const Data&) const = default;

  private:
    std::string m_bytes;
};

// Whether the bytes are valid UTF-8 (RFC 3629: no surrogates, no overlong forms).
bool isValidUTF8(std::string_view bytes);

}  // namespace torvel
