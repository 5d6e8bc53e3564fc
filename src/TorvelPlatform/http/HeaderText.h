#pragma once  // internal

#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// The small grammar of header fields (RFC 9110, 5.6).

bool equalIgnoringCase(const char* a, const char* b, std::size_t size);
inline bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && equalIgnoringCase(a.data(), b.data(), a.size());  // most differ in size
}
std::string lowercased(std::string text);
// Without spaces and tabs at both ends.
std::string_view trimmed(std::string_view text);
// A method or field name: one or more tchar.
bool isToken(std::string_view text);
// No CR, LF or NUL, with which a value could end its field and begin another.
bool isFieldValue(std::string_view text);
// The trimmed, non-empty items of a list; separators inside quoted strings do not count.
std::vector<std::string_view> listItems(std::string_view text, char separator = ',');

}  // namespace torvel
