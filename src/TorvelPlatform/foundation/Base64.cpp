#include "TorvelPlatform/foundation/Base64.h"

#include <array>

namespace torvel {
namespace {

constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::uint32_t notInAlphabet = 1U << 24;

// For each of the four characters of a group, the bits that it brings to the group's 24.
using GroupTable = std::array<std::uint32_t, 256>;

constexpr GroupTable makeTable(unsigned shift) {
    GroupTable table{};
    table.fill(notInAlphabet);
    for (std::uint32_t i = 0; i < alphabet.size(); ++i)
        table[static_cast<std::uint8_t>(alphabet[i])] = i << shift;
    return table;
}

constexpr std::array<GroupTable, 4> tables = {makeTable(18), makeTable(12), makeTable(6), makeTable(0)};

std::uint32_t decodeGroup(const char* group) {
    std::uint32_t bits = 0;
    for (unsigned i = 0; i < 4; ++i) bits |= tables[i][static_cast<std::uint8_t>(group[i])];
    return bits;
}

char* encodeGroup(std::uint32_t bits, char* out) {
    out[0] = alphabet[bits >> 18];
    out[1] = alphabet[bits >> 12 & 0x3F];
    out[2] = alphabet[bits >> 6 & 0x3F];
    out[3] = alphabet[bits & 0x3F];
    return out + 4;
}

char* storeGroup(std::uint32_t bits, char* out) {
    for (unsigned i = 0; i < 3; ++i) out[i] = static_cast<char>(bits >> (16 - 8 * i));
    return out + 3;
}

}  // namespace

std::string Base64::encode(std::span<const std::uint8_t> bytes) {
    std::string text((bytes.size() + 2) / 3 * 4, '=');
    char* out = text.data();
    for (; bytes.size() >= 3; bytes = bytes.subspan(3))
        out = encodeGroup(std::uint32_t{bytes[0]} << 16 | std::uint32_t{bytes[1]} << 8 | bytes[2], out);
    if (bytes.empty()) return text;
    const std::uint32_t last = bytes.size() == 2 ? bytes[1] : 0U;
    encodeGroup(std::uint32_t{bytes[0]} << 16 | last << 8, out);
    out[3] = '=';
    if (bytes.size() == 1) out[2] = '=';
    return text;
}

std::optional<Data> Base64::decode(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    if (text.empty()) return Data();
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;

    std::string bytes(text.size() / 4 * 3, '\0');
    char* out = bytes.data();
    std::uint32_t seen = 0;
    for (; text.size() > 4; text.remove_prefix(4)) {
        const std::uint32_t bits = decodeGroup(text.data());
        seen |= bits;
        out = storeGroup(bits, out);
    }
    std::string last(text);
    last.replace(4 - padding, padding, padding, 'A');
    const std::uint32_t bits = decodeGroup(last.data());
    storeGroup(bits, out);
    if (((seen | bits) & notInAlphabet) != 0) return std::nullopt;
    bytes.resize(bytes.size() - padding);
    return Data(std::move(bytes));
}

}  // namespace torvel
