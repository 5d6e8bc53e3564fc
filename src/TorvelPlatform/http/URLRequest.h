#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/URL.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace torvel {

// Header fields in order. Names compare without regard to ASCII case (RFC 9110, 5.1).
class HTTPHeaders {
  public:
    using Field = std::pair<std::string, std::string>;

    // The value of a field; absent when there is none.
    std::optional<std::string> value(std::string_view name) const;
    // Replaces every field of that name by one.
    void set(std::string_view name, std::string_view value);
    // Appends to an existing value with "," between, as the platform's header addition does, or sets it.
    void add(std::string_view name, std::string_view value);
    void remove(std::string_view name);

    const std::vector<Field>& fields() const { return m_fields; }
    bool operator==(const HTTPHeaders&) const = default;

  private:
    std::vector<Field> m_fields;
};

enum class URLRequestCachePolicy { useProtocolCachePolicy, reloadIgnoringLocalCacheData };

// A request before it is sent: a value that interceptors change.
struct URLRequest {
    explicit URLRequest(URL requestURL) : url(std::move(requestURL)) {}

    std::optional<URL> url;
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
