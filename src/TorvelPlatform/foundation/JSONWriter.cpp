#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/JSON.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace torvel {
namespace {

// Characters that stand in a JSON text as themselves: not controls, quote, backslash, and not "/" either,
// which the platform's writer escapes. Of one, or of each of a block.
template <class Characters>
constexpr auto needsEscape(Characters c) {
    return (c < 0x20) | (c == '"') | (c == '\\') | (c == '/');
}

// Length of the plain characters at the start, a block at a time: encrypted bodies are megabytes.
std::size_t plainLength(std::string_view text) {
    using Block = unsigned char __attribute__((vector_size(8)));
    std::size_t length = 0;
    for (Block block; length + sizeof block <= text.size(); length += sizeof block) {
        std::memcpy(&block, text.data() + length, sizeof block);
        auto escapes = std::bit_cast<std::uint64_t>(needsEscape(block));
        if constexpr (std::endian::native == std::endian::big) escapes = __builtin_bswap64(escapes);
        if (escapes != 0) return length + static_cast<std::size_t>(std::countr_zero(escapes)) / 8;
    }
    while (length < text.size() && !needsEscape(static_cast<unsigned char>(text[length]))) ++length;
    return length;
}

void appendEscaped(std::string& out, char c) {
    static constexpr std::string_view controls = "\b\f\n\r\t", letters = "bfnrt";
    static constexpr char digits[] = "0123456789abcdef";
    const std::size_t index = controls.find(c);
    if (index != std::string_view::npos) {
        out += {'\\', letters[index]};
    } else if (const auto byte = static_cast<unsigned char>(c); byte < 0x20) {
        out += "\\u00";
        out += {digits[byte >> 4], digits[byte & 15]};
    } else {
        out += {'\\', c};
    }
}

void appendQuoted(std::string& out, std::string_view text) {
    out += '"';
    while (true) {
        const std::size_t plain = plainLength(text);
        out += text.substr(0, plain);
        if (plain == text.size()) break;
        appendEscaped(out, text[plain]);
        text.remove_prefix(plain + 1);
    }
    out += '"';
}

}  // namespace

std::optional<std::string> prettyPrintedJSON(std::initializer_list<JSONMember> members) {
    std::string out;
    std::size_t size = 0;
    for (const JSONMember& member : members) {
        if (!isValidUTF8(member.name) || !isValidUTF8(member.value)) return std::nullopt;
        size += member.name.size() + member.value.size();
    }
    out.reserve(size + size / 32 + 64);  // of base64 digits, one in 64 is an escaped "/"
    out += "{\n";
    std::string_view separator = "  ";
    for (const JSONMember& member : members) {
        out += separator;
        appendQuoted(out, member.name);
        out += " : ";
        appendQuoted(out, member.value);
        separator = ",\n  ";
    }
    return std::move(out) + "\n}";
}

}  // namespace torvel
