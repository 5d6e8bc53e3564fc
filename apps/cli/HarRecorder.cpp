#include "cli/HarRecorder.h"

#include "TorvelLibrary/Data/Remote/Interceptors/EnvelopeNames.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/DateFormatter.h"
#include "TorvelPlatform/http/Session.h"

#include <algorithm>
#include <fstream>

namespace torvel::cli {
namespace {

using Json = nlohmann::ordered_json;

constexpr char leftOut[] = "(left out)";

// The fields whose values are shown. Names compare without regard to case.
bool isHarmless(std::string_view field) {
    static const HTTPHeaders& shown = *new HTTPHeaders([] {
        HTTPHeaders names;
        for (const char* name :
             {"Accept", "Accept-Encoding", "Accept-Language", "Age", "Allow", "Cache-Control", "Connection",
              "Content-Encoding", "Content-Length", "Content-Type", "Date", "Expires", "Last-Modified",
              "Retry-After", "Server", "Transfer-Encoding", "User-Agent", "Vary"})
            names.set(name, "");
        return names;
    }());
    return shown.value(field).has_value();
}

Json fieldsOf(const HTTPHeaders& headers) {
    Json fields = Json::array();
    for (const auto& [name, value] : headers.fields())
        fields.push_back({{"name", name}, {"value", isHarmless(name) ? value : leftOut}});
    return fields;
}

// The names in a query; their values are left out.
Json queryOf(const HopMetrics& hop) {
    Json names = Json::array();
    std::string_view rest = hop.url ? hop.url->encodedQuery().value_or("") : "";
    while (!rest.empty()) {
        const std::string_view item = rest.substr(0, rest.find('&'));
        rest.remove_prefix(std::min(item.size() + 1, rest.size()));
        names.push_back({{"name", std::string(item.substr(0, item.find('=')))}, {"value", leftOut}});
    }
    return names;
}

// Whether a body is an envelope and nothing else, so that it holds no readable secret.
bool isSealed(const std::string& body) {
    const auto json = nlohmann::json::parse(body, nullptr, false);
    if (!json.is_object() || json.empty()) return false;
    const auto isEnvelopes = [](std::string_view name) {
        for (const WrapperConfig flavour : {WrapperConfig::VelmMoney, WrapperConfig::QuentaMerchantApp}) {
            const EnvelopeNames names = envelopeNames(flavour);
            for (const std::string_view known :
                 {names.requestKey, names.requestData, names.requestIv, names.responseData, names.responseIv})
                if (name == known) return true;
        }
        return false;
    };
    const auto isCipherText = [](const nlohmann::json& value) {
        constexpr std::size_t block = 16;
        const auto bytes = value.is_string() ? Base64::decode(value.get<std::string>()) : std::nullopt;
        return bytes && bytes->size() >= block;
    };
    return std::ranges::all_of(json.items(), [&](const auto& item) {
        return isEnvelopes(item.key()) && isCipherText(item.value());
    });
}

// A body's text, or why it is not there.
Json bodyOf(const Data& body, const HTTPHeaders& headers) {
    Json content{{"mimeType", headers.value("Content-Type").value_or("")}};
    if (isSealed(body.raw()))
        content["text"] = body.raw();
    else
        content["comment"] = "left out: not sealed";
    return content;
}

std::string versionOf(const HopMetrics& hop) {
    return hop.httpVersion == 20 ? "HTTP/2" : hop.httpVersion == 10 ? "HTTP/1.0" : "HTTP/1.1";
}

Json requestOf(const HopMetrics& hop) {
    Json request{
        {"method", hop.method},     {"url", hop.location()},           {"httpVersion", versionOf(hop)},
        {"cookies", Json::array()}, {"headers", fieldsOf(hop.fields)}, {"queryString", queryOf(hop)},
        {"headersSize", -1},        {"bodySize", hop.bytesSent}};
    if (hop.body) {
        request["postData"] = bodyOf(*hop.body, hop.fields);
        if (!request["postData"].contains("text")) request["postData"]["text"] = leftOut;
    }
    return request;
}

// Without an answer the status is 0, as browsers have it, and the reason a comment.
Json responseOf(const HopMetrics& hop, const DataResponse* last) {
    const HTTPHeaders headers = hop.response ? hop.response->headers : HTTPHeaders();
    Json content{{"size", 0}, {"mimeType", headers.value("Content-Type").value_or("")}};
    if (last != nullptr && last->data) {
        content.update(bodyOf(*last->data, headers));
        content["size"] = last->data->size();
    }
    Json response{{"status", hop.response ? hop.response->statusCode : 0},
                  {"statusText", ""},
                  {"httpVersion", versionOf(hop)},
                  {"cookies", Json::array()},
                  {"headers", fieldsOf(headers)},
                  {"content", std::move(content)},
                  {"redirectURL", ""},
                  {"headersSize", -1},
                  {"bodySize", hop.bytesReceived}};
    if (last != nullptr && last->error) response["comment"] = last->error->localizedDescription;
    return response;
}

// In milliseconds; -1 for a step that was not made. Each lasts until the next or, the last one, until the
// end, so that their sum is the whole time; the step of the connection includes TLS.
Json timingsOf(const HopMetrics& hop) {
    const auto between = [](std::optional<double> from, std::optional<double> to) {
        return from && to ? std::max(0.0, (*to - *from) * 1000) : -1.0;
    };
    const double sending = hop.sending.value_or(hop.end), firstByte = hop.firstByte.value_or(hop.end);
    return {{"blocked", (hop.nameLookedUp ? hop.queued : sending) * 1000},
            {"dns", between(hop.queued, hop.nameLookedUp)},
            {"connect", between(hop.nameLookedUp, sending)},
            {"ssl", between(hop.connected, hop.secured)},
            {"send", 0.0},
            {"wait", between(sending, firstByte)},
            {"receive", between(firstByte, hop.end)}};
}

Json entryOf(const HopMetrics& hop, const DataResponse* last) {
    return {{"startedDateTime", DateFormatter("yyyy-MM-dd'T'HH:mm:ss.SSSxxx").string(hop.start)},
            {"time", hop.end * 1000},
            {"request", requestOf(hop)},
            {"response", responseOf(hop, last)},
            {"cache", Json::object()},
            {"timings", timingsOf(hop)}};
}

}  // namespace

void HarRecorder::requestDidEnd(const std::vector<HopMetrics>& hops, const DataResponse& response) {
    const std::lock_guard lock(m_mutex);
    for (const HopMetrics& hop : hops)
        m_entries.push_back(entryOf(hop, &hop == &hops.back() ? &response : nullptr));
}

std::optional<std::string> HarRecorder::write(const std::filesystem::path& file) const {
    const std::lock_guard lock(m_mutex);
    const Json archive{{"log",
                        {{"version", "1.2"},
                         {"creator", {{"name", "torvel"}, {"version", TORVEL_VERSION}}},
                         {"entries", m_entries}}}};
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << archive.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
    if (stream.flush()) return std::nullopt;
    return file.string() + " cannot be written";
}

}  // namespace torvel::cli
