#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/URL.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace torvel {

// Header fields in order. Names compare without regard to ASCII case (RFC 9110, 5.1). A value; threads may
// share one that none changes.
class HTTPHeaders {
  public:
    // A name and its value.
    using Field = std::pair<std::string, std::string>;

    // The value of a field; absent when there is none.
    std::optional<std::string> value(std::string_view name) const;
    bool contains(std::string_view name) const;
    // Replaces every field of that name by one.
    void set(std::string_view name, std::string_view value);
    // Appends to an existing value with "," between, as the platform's header addition does, or sets it.
    void add(std::string_view name, std::string_view value);
    void remove(std::string_view name);
    // Makes room for so many fields at once.
    void reserve(std::size_t count) { m_fields.reserve(count); }

    // All fields in the order of setting.
    const std::vector<Field>& fields() const { return m_fields; }
    bool operator==(const HTTPHeaders&) const = default;

  private:
    void append(std::string_view name, std::string_view value);

    std::vector<Field> m_fields;
};

// Whether the shared cache may answer.
enum class URLRequestCachePolicy { useProtocolCachePolicy, reloadIgnoringLocalCacheData };

// A request before it is sent: a value that interceptors change.
struct URLRequest {
    // A GET request without a body.
    explicit URLRequest(URL requestURL) : url(std::move(requestURL)) {}

    // Where to; a request without one fails.
    std::optional<URL> url;
    // The method as it goes out.
    std::string httpMethod = "GET";
    // Host, Connection, Content-Length, Transfer-Encoding and Expect belong to the connection: a session
    // ignores them here.
    HTTPHeaders headers;
    // A body that is present but empty is not the same as no body.
    std::optional<Data> httpBody;
    URLRequestCachePolicy cachePolicy = URLRequestCachePolicy::useProtocolCachePolicy;
    // Seconds without a byte moving in either direction, from the start on, before the request times out.
    // What is no positive number counts as the default.
    double timeoutInterval = 60.0;
};

}  // namespace torvel
