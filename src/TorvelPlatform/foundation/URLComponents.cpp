#include "TorvelPlatform/foundation/URLComponents.h"

#include "TorvelPlatform/foundation/PercentEncoding.h"

namespace torvel {
namespace {

std::optional<URLQueryItem> queryItem(std::string_view text) {
    const std::size_t equals = text.find('=');
    std::optional<std::string> name = removingPercentEncoding(text.substr(0, equals));
    if (!name) return std::nullopt;
    if (equals == std::string_view::npos) return URLQueryItem{std::move(*name), std::nullopt};
    std::optional<std::string> value = removingPercentEncoding(text.substr(equals + 1));
    if (!value) return std::nullopt;
    return URLQueryItem{std::move(*name), std::move(value)};
}

std::optional<std::vector<URLQueryItem>> queryItemsIn(std::string_view query) {
    std::vector<URLQueryItem> items;
    while (true) {
        const std::size_t separator = query.find('&');
        std::optional<URLQueryItem> item = queryItem(query.substr(0, separator));
        if (!item) return std::nullopt;
        items.push_back(std::move(*item));
        if (separator == std::string_view::npos) return items;
        query.remove_prefix(separator + 1);
    }
}

}  // namespace

std::optional<URLComponents> URLComponents::of(const URL& url) {
    URLComponents components;
    std::optional<std::string> path = removingPercentEncoding(url.encodedPath());
    if (!path) return std::nullopt;
    components.m_path = std::move(*path);
    if (const auto query = url.encodedQuery()) {
        components.m_queryItems = queryItemsIn(*query);
        if (!components.m_queryItems) return std::nullopt;
    }
    return components;
}

}  // namespace torvel
