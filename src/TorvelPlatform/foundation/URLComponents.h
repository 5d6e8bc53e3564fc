#pragma once

#include "TorvelPlatform/foundation/URL.h"

#include <optional>
#include <string>
#include <vector>

namespace torvel {

// One "name=value" of a query.
struct URLQueryItem {
    std::string name;                  // percent-decoded
    std::optional<std::string> value;  // percent-decoded; absent for an item without "="
    bool operator==(const URLQueryItem&) const = default;
};

// The parts of a URL. "+" in a query is a plus sign, as RFC 3986 has it, not a space. A value; threads may
// share one that none changes.
class URLComponents {
  public:
    // Absent when a percent-escape of the path or query does not decode to UTF-8.
    static std::optional<URLComponents> of(const URL& url);

    // The path, percent-decoded.
    const std::string& path() const { return m_path; }
    // Absent when the URL has no query. An empty query is one item with an empty name.
    const std::optional<std::vector<URLQueryItem>>& queryItems() const { return m_queryItems; }

  private:
    std::string m_path;
    std::optional<std::vector<URLQueryItem>> m_queryItems;
};

}  // namespace torvel
