#include "TorvelPlatform/http/Origins.h"

#include "TorvelPlatform/http/HeaderText.h"

#include <algorithm>
#include <charconv>

namespace torvel {
namespace {

// The server's hint "Keep-Alive: timeout=5, max=100", in seconds.
std::optional<long> keepAliveTimeout(const HTTPHeaders& headers) {
    const std::string hints = headers.value("Keep-Alive").value_or("");
    for (const std::string_view hint : listItems(hints)) {
        const std::size_t equals = hint.find('=');
        if (equals == std::string_view::npos ||
            !equalsIgnoringCase(trimmed(hint.substr(0, equals)), "timeout"))
            continue;
        const std::string_view number = trimmed(hint.substr(equals + 1));
        long seconds = 0;
        if (std::from_chars(number.data(), number.data() + number.size(), seconds).ec == std::errc())
            return seconds;
    }
    return std::nullopt;
}

}  // namespace

std::string Origins::keyOf(const URL& url) {
    std::string key;
    key.reserve(url.absoluteString().size() + 2);  // room for a port of 0
    key.append(url.scheme().value_or("")).append("://").append(url.host().value_or("")).append(":");
    return lowercased(std::move(key.append(std::to_string(url.port().value_or(0)))));
}

Origins::Origin Origins::of(const std::string& key) const {
    const auto found = m_origins.find(key);
    return found == m_origins.end() ? Origin{} : found->second;
}

void Origins::learn(const std::string& key, const ResponseHead& head, bool offeredHTTP2) {
    constexpr std::size_t mostOrigins = 1000;
    if (m_origins.size() >= mostOrigins && !m_origins.contains(key))
        m_origins.clear();  // costs no more than learning again
    Origin& origin = m_origins[key];
    if (offeredHTTP2 && origin.multiplexes.value_or(true)) origin.multiplexes = head.multiplexed();
    const std::optional<long> timeout = keepAliveTimeout(head.headers());
    if (!timeout) return;
    origin.keepsAlive = *timeout > 1;
    origin.maximumIdleAge = std::clamp(*timeout - 1, 1L, Origin{}.maximumIdleAge);
}

}  // namespace torvel
