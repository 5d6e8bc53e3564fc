#include "TorvelPlatform/http/ResponseHead.h"

#include "TorvelPlatform/http/HeaderText.h"

#include <charconv>

namespace torvel {
namespace {

// All lines together, interim answers included.
constexpr std::size_t maximumHeadBytes = std::size_t{256} * 1024;

std::string_view withoutLineEnd(std::string_view line) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    return line;
}

std::optional<std::uint64_t> parseLength(std::string_view text) {
    std::uint64_t length = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), length);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
    return length;
}

}  // namespace

bool ResponseHead::addLine(std::string_view line) {
    if (m_complete) return true;
    m_bytes += line.size();
    if (m_bytes > maximumHeadBytes) return fail("its header fields are too large");
    line = withoutLineEnd(line);
    if (line.starts_with("HTTP/")) return addStatusLine(line);
    return line.empty() ? end() : addField(line);
}

bool ResponseHead::addStatusLine(std::string_view line) {
    constexpr std::size_t usual = 8;  // fields of an answer
    m_headers = {};
    m_headers.reserve(usual);
    m_lastName.clear();
    m_multiplexed = !line.starts_with("HTTP/1");
    line.remove_prefix(std::min(line.find(' '), line.size()));
    const std::string_view code = trimmed(line).substr(0, 3);
    const auto read = std::from_chars(code.data(), code.data() + code.size(), m_statusCode);
    return read.ec == std::errc() || fail("its status line is malformed");
}

bool ResponseHead::addField(std::string_view line) {
    if (line.front() == ' ' || line.front() == '\t') {  // an old line folding (RFC 9112, 5.2)
        if (m_lastName.empty()) return fail("a header field has no name");
        m_headers.set(m_lastName, m_headers.value(m_lastName).value_or("").append(" ").append(trimmed(line)));
        return true;
    }
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos || !isToken(line.substr(0, colon)))
        return fail("a header field is malformed");
    m_lastName = line.substr(0, colon);
    m_headers.add(m_lastName, trimmed(line.substr(colon + 1)));
    return true;
}

bool ResponseHead::end() {
    if (m_statusCode < 200) return true;
    m_complete = true;
    return readFraming();
}

bool ResponseHead::readFraming() {
    const std::string codings = m_headers.value("Transfer-Encoding").value_or("");
    for (const std::string_view coding : listItems(codings)) {
        // We never ask for compression here, where its end cannot be checked.
        if (!equalsIgnoringCase(coding, "chunked")) return fail("its transfer encoding is unknown");
        m_chunked = true;
    }
    const std::string lengths = m_headers.value("Content-Length").value_or("");
    for (const std::string_view text : listItems(lengths)) {
        const std::optional<std::uint64_t> length = parseLength(text);
        if (!length) return fail("its content length is malformed");
        if (m_contentLength && m_contentLength != length) return fail("it has two content lengths");
        m_contentLength = length;
    }
    return true;
}

std::optional<std::uint64_t> ResponseHead::contentLength() const {
    return m_chunked ? std::nullopt : m_contentLength;
}

bool ResponseHead::fail(std::string_view why) {
    m_fault = why;
    return false;
}

}  // namespace torvel
