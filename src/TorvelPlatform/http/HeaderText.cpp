#include "TorvelPlatform/http/HeaderText.h"

#include <algorithm>
#include <array>

namespace torvel {
namespace {

constexpr char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr auto tokenCharacters = [] {
    std::array<bool, 256> table{};
    for (const char c : std::string_view("!#$%&'*+-.^_`|~0123456789abcdefghijklmnopqrstuvwxyz"
                                         "ABCDEFGHIJKLMNOPQRSTUVWXYZ"))
        table[static_cast<unsigned char>(c)] = true;
    return table;
}();

// Where the item that starts at `begin` ends.
std::size_t itemEnd(std::string_view text, std::size_t begin, char separator) {
    bool quoted = false;
    for (std::size_t at = begin; at < text.size(); ++at) {
        if (quoted && text[at] == '\\') {
            ++at;
        } else if (text[at] == '"') {
            quoted = !quoted;
        } else if (text[at] == separator && !quoted) {
            return at;
        }
    }
    return text.size();
}

}  // namespace

bool equalIgnoringCase(const char* a, const char* b, std::size_t size) {
    return std::equal(a, a + size, b, [](char x, char y) { return lower(x) == lower(y); });
}

std::string lowercased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), lower);
    return text;
}

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

bool isToken(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), [](char c) {
        return tokenCharacters[static_cast<unsigned char>(c)];
    });
}

bool isFieldValue(std::string_view text) {
    return std::none_of(text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

std::vector<std::string_view> listItems(std::string_view text, char separator) {
    std::vector<std::string_view> items;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = itemEnd(text, begin, separator);
        const std::string_view item = trimmed(text.substr(begin, end - begin));
        if (!item.empty()) items.push_back(item);
        begin = end + 1;
    }
    return items;
}

}  // namespace torvel
