#include "TorvelLibrary/Data/Remote/Networking/RequestLog.h"

#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/http/Session.h"

#include <array>
#include <cstdio>

namespace torvel {
namespace {

std::string milliseconds(double seconds) {
    std::array<char, 32> text;
    std::snprintf(text.data(), text.size(), "%.1f ms", seconds * 1000);
    return text.data();
}

std::string steps(const HopMetrics& hop) {
    const std::pair<const char*, const std::optional<double>&> reached[] = {{"name", hop.nameLookedUp},
                                                                            {"connection", hop.connected},
                                                                            {"TLS", hop.secured},
                                                                            {"first byte", hop.firstByte}};
    std::string text;
    for (const auto& [name, moment] : reached)
        if (moment) text += std::string(name) + " " + milliseconds(*moment) + ", ";
    return text + "end " + milliseconds(hop.end);
}

std::string line(const HopMetrics& hop) {
    std::string text = hop.method + " " + hop.location() + " -> ";
    text += hop.response ? std::to_string(hop.response->statusCode) : "no answer";
    if (hop.cached) text += " from the cache";
    text += ": " + steps(hop) + "; " + std::to_string(hop.bytesSent) + " body bytes sent, " +
            std::to_string(hop.bytesReceived) + " received";
    return hop.reusedConnection ? text + " over a kept connection" : text;
}

}  // namespace

void RequestLog::requestDidEnd(const std::vector<HopMetrics>& hops, const DataResponse& response) {
    std::string text;
    for (const HopMetrics& hop : hops) text += (text.empty() ? "" : "; then ") + line(hop);
    if (response.error) text += "; " + response.error->localizedDescription;
    LogUtils::i(text, {"Data/Remote/Networking/RequestLog", "requestDidEnd(_:_:)"});
}

}  // namespace torvel
