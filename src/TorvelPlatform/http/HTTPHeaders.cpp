#include "TorvelPlatform/http/HeaderText.h"
#include "TorvelPlatform/http/URLRequest.h"

#include <algorithm>

namespace torvel {
namespace {

template <class Fields>
auto find(Fields& fields, std::string_view name) {
    return std::find_if(fields.begin(), fields.end(),
                        [name](const auto& field) { return equalsIgnoringCase(field.first, name); });
}

}  // namespace

std::optional<std::string> HTTPHeaders::value(std::string_view name) const {
    const auto field = find(m_fields, name);
    if (field == m_fields.end()) return std::nullopt;
    return field->second;
}

bool HTTPHeaders::contains(std::string_view name) const { return find(m_fields, name) != m_fields.end(); }

void HTTPHeaders::set(std::string_view name, std::string_view value) {
    const auto field = find(m_fields, name);
    if (field == m_fields.end()) {
        append(name, value);
    } else {
        field->second = value;
    }
}

void HTTPHeaders::add(std::string_view name, std::string_view value) {
    const auto field = find(m_fields, name);
    if (field == m_fields.end()) {
        append(name, value);
    } else {
        field->second.append(",").append(value);
    }
}

void HTTPHeaders::append(std::string_view name, std::string_view value) {
    constexpr std::size_t usual = 4;  // fields of a request, which then need no growing
    if (m_fields.capacity() == 0) m_fields.reserve(usual);
    m_fields.emplace_back(name, value);
}

void HTTPHeaders::remove(std::string_view name) {
    const auto field = find(m_fields, name);
    if (field != m_fields.end()) m_fields.erase(field);
}

}  // namespace torvel
