#include "TorvelPlatform/http/FieldList.h"

#include "TorvelPlatform/http/HeaderText.h"

#include <algorithm>
#include <array>

namespace torvel {
namespace {

// Owned by the connection or made from the body; a caller's own would contradict what is sent. Cookies are
// joined with the jar's elsewhere.
bool isReserved(std::string_view name) {
    using namespace std::string_view_literals;
    constexpr std::array reserved{"Host"sv,   "Connection"sv, "Content-Length"sv, "Transfer-Encoding"sv,
                                  "Expect"sv, "Cookie"sv};
    return std::any_of(reserved.begin(), reserved.end(),
                       [name](std::string_view field) { return equalsIgnoringCase(name, field); });
}

constexpr std::string_view noContentType = "Content-Type", noExpectation = "Expect";

}  // namespace

FieldList::FieldList(const HTTPHeaders& headers) {
    // Neither block may move: the nodes point into both.
    std::size_t size = noContentType.size() + noExpectation.size() + 4;
    for (const auto& [name, value] : headers.fields()) size += name.size() + value.size() + 3;
    m_text.reserve(size);
    m_nodes.reserve(headers.fields().size() + 2);

    for (const auto& [name, value] : headers.fields()) {
        if (isReserved(name)) continue;
        // The client's notation for a field with an empty value is "Name;".
        const bool isEmpty = trimmed(value).empty();
        add(name, isEmpty ? ";" : ": ", isEmpty ? std::string_view() : value);
    }
    add(noExpectation, ":", "");  // waiting for "100 Continue" costs a second with most servers
    if (!headers.contains("Content-Type")) add(noContentType, ":", "");  // no type is made up
}

void FieldList::add(std::string_view name, std::string_view separator, std::string_view value) {
    char* const line = m_text.data() + m_text.size();
    m_text.append(name).append(separator).append(value).push_back('\0');
    m_nodes.push_back({line, nullptr});
    if (m_nodes.size() > 1) m_nodes[m_nodes.size() - 2].next = &m_nodes.back();
}

}  // namespace torvel
