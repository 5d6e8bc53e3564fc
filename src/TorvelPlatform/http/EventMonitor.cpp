#include "TorvelPlatform/http/EventMonitor.h"

namespace torvel {

void EventMonitor::requestDidStart(const URLRequest&) {}

std::string HopMetrics::location() const {
    if (!url) return "(no URL)";
    const std::string host = url->host().value_or("");
    const bool isIPv6 = host.find(':') != std::string::npos;
    std::string text = url->scheme().value_or("");
    text.append(isIPv6 ? "://[" : "://").append(host).append(isIPv6 ? "]" : "");
    if (const auto port = url->port()) text.append(":").append(std::to_string(*port));
    return text.append(url->encodedPath());
}

}  // namespace torvel
