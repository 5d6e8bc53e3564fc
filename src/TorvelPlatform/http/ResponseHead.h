#pragma once  // internal

#include "TorvelPlatform/http/URLRequest.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// The head of an answer as its lines arrive. Interim answers (1xx) are passed over, trailers ignored.
class ResponseHead {
  public:
    // Takes one line with its line end. False when the head breaks a rule; fault() then says which.
    bool addLine(std::string_view line);

    // Whether the head of the final answer has ended.
    bool complete() const { return m_complete; }
    const std::string& fault() const { return m_fault; }

    int statusCode() const { return m_statusCode; }
    const HTTPHeaders& headers() const { return m_headers; }
    HTTPHeaders takeHeaders() { return std::move(m_headers); }
    bool multiplexed() const { return m_multiplexed; }  // HTTP/2 and later
    bool chunked() const { return m_chunked; }
    // Absent when the head announces none, or when chunks override it (RFC 9112, 6.3).
    std::optional<std::uint64_t> contentLength() const;

  private:
    bool addStatusLine(std::string_view line);
    bool addField(std::string_view line);
    bool end();
    bool readFraming();
    bool fail(std::string_view why);

    bool m_complete = false;
    bool m_multiplexed = false;
    bool m_chunked = false;
    int m_statusCode = 0;
    std::size_t m_bytes = 0;
    HTTPHeaders m_headers;
    std::string m_lastName;
    std::optional<std::uint64_t> m_contentLength;
    std::string m_fault;
};

}  // namespace torvel
