#include "TorvelPlatform/http/MultipartFormData.h"

#include <cstdint>
#include <random>

namespace torvel {
namespace {

std::string randomBoundary() {
    constexpr char digits[] = "0123456789abcdef";
    std::random_device random;
    std::string boundary = "torvel.boundary.";
    for (int i = 0; i < 32; ++i) boundary += digits[random() & 0xFU];
    return boundary;
}

// As browsers do it (HTML, "multipart/form-data encoding algorithm"): a name cannot end its parameter.
std::string escapedName(std::string_view name) {
    std::string escaped;
    for (const char c : name) {
        switch (c) {
            case '"':
                escaped += "%22";
                break;
            case '\r':
                escaped += "%0D";
                break;
            case '\n':
                escaped += "%0A";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

// A type that could end its field is no type.
std::string_view safeType(std::string_view type) {
    return type.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos
               ? type
               : "application/octet-stream";
}

}  // namespace

MultipartFormData::MultipartFormData() : m_boundary(randomBoundary()) {}

void MultipartFormData::append(Data content, std::string_view withName, std::string_view fileName,
                               std::string_view mimeType) {
    m_parts.push_back(
        {std::move(content), std::string(withName), std::string(fileName), std::string(mimeType)});
}

std::string MultipartFormData::contentType() const { return "multipart/form-data; boundary=" + m_boundary; }

std::string MultipartFormData::head(std::size_t part) const {
    const Part& described = m_parts[part];
    std::string head = part == 0 ? "--" : "\r\n--";
    head.append(m_boundary).append("\r\nContent-Disposition: form-data; name=\"");
    head.append(escapedName(described.name)).append("\"; filename=\"");
    head.append(escapedName(described.fileName)).append("\"\r\nContent-Type: ");
    return head.append(safeType(described.mimeType)).append("\r\n\r\n");
}

std::string MultipartFormData::tail() const { return "\r\n--" + m_boundary + "--\r\n"; }

std::size_t MultipartFormData::contentLength() const {
    std::size_t length = tail().size();
    for (std::size_t part = 0; part < m_parts.size(); ++part)
        length += head(part).size() + m_parts[part].content.size();
    return length;
}

}  // namespace torvel
