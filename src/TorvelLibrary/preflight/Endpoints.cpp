// The endpoint table, and the server that its paths are appended to.
#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Data/Remote/Networking/Target.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/preflight/Findings.h"

#include <set>

namespace torvel::preflight {
namespace {

constexpr char unusable[] =
    "the whole table is dropped: every look-up gives the identifier in place of its path";

class Endpoints {
  public:
    explicit Endpoints(const Host& host) : m_host(host), m_settings(host.settings) {}

    PreflightSubject examine() {
        if (m_settings.serverURL) server(*m_settings.serverURL);
        const auto file = m_host.bundle.path(Constants::endpointTable, Constants::propertyListType);
        if (!file) {
            m_findings.warning("missing", {std::string(Constants::endpointTable) + ".plist"},
                               {"the bundle has no endpoint table",
                                "an error is logged and every look-up gives the identifier itself",
                                "add the file, or an empty dictionary in it"});
            return std::move(m_findings).finish("no table");
        }
        const auto table = readList(m_host, *file, unusable, m_findings);
        return std::move(m_findings).finish(table ? entries(*table) : "the table cannot be read");
    }

  private:
    void server(const std::string& text) {
        const auto url = URL::parse(text);
        const std::string scheme = url ? url->scheme().value_or("") : "";
        const Place place{.key = "serverURL"};
        if (!url || !url->host() || (scheme != "https" && scheme != "http")) {
            m_findings.error(
                "server", place,
                {inQuotes(text) + " is no URL of a server", "every request to a path fails before it is sent",
                 "give setServerURL() an https URL with a host"});
        } else if (scheme != "https") {
            m_findings.error("server", place,
                             {inQuotes(text) + " is without TLS",
                              "requests travel readable and no pin is ever checked", "use https"});
        }
    }

    std::string entries(const ListFile& table) {
        const PropertyList::Dictionary* const values = table.root.dictionary();
        if (values == nullptr) {
            m_findings.error("root", {table.file.name()},
                             {"the root is not a dictionary", unusable, "make it a dictionary of texts"});
            return "the table cannot be used";
        }
        for (const auto& [id, value] : *values) {
            if (value.string() != nullptr)
                entry(table.file.at(id), *value.string());
            else
                m_findings.error("not-a-text", table.file.at(id),
                                 {"the value is not a text", unusable, "write the path as a string"});
        }
        return counted(values->size(), "endpoint");
    }

    void entry(const Place& place, const std::string& value) {
        if (const auto url = wholeURL(value); url && url->host())
            absolute(place, value, *url);
        else
            relative(place, value);
    }

    void absolute(const Place& place, const std::string& value, const URL& url) {
        if (url.scheme() != "https")
            m_findings.error("without-tls", place,
                             {inQuotes(value) + " is without TLS",
                              "this request travels readable and no pin is ever checked", "use https"});
        const std::string host = getURLDomain(value);
        const std::string pinned = getURLDomain(m_settings.serverURL.value_or(""));
        const bool pins = m_settings.sslType.kind() != SSlPinningType::Kind::none;
        if (!pins || m_settings.isHttpsByPassRequired || host == pinned) return;
        m_findings.error(
            "unpinned-host", place,
            {inQuotes(host) + " is another host than the server's, " + inQuotes(pinned),
             "pins cover the host of the first request alone; the other one's certificate is not "
             "looked at, so that anyone can answer for it",
             "serve this path from the server's host, or ask for it outside the library"});
    }

    void relative(const Place& place, const std::string& value) {
        if (value.starts_with("http"))
            m_findings.warning("reads-as-url", place,
                               {"the path " + inQuotes(value) + " begins with \"http\"",
                                "it is taken for a whole URL and never reaches the server",
                                "begin it with a slash, or name it differently"});
        // Without a server the path is tried against a typical one.
        const std::string server = m_settings.serverURL.value_or("https://host.example/");
        const auto base = URL::parse(server);
        const auto joined = URL::parse(server + value);
        if (base && (!joined || value.empty())) {
            m_findings.error("not-a-url", place,
                             {inQuotes(value) + " makes no URL behind " + inQuotes(server),
                              "the request fails before it is sent, on the caller's thread",
                              "percent-encode what a URL cannot hold"});
        } else if (base && m_settings.serverURL) {
            slashes(place, value, server);
        }
    }

    void slashes(const Place& place, const std::string& value, const std::string& server) {
        const bool opens = value.starts_with('/') || value.starts_with('?');
        if (server.ends_with('/') && value.starts_with('/'))
            m_findings.warning("double-slash", place,
                               {"the server's URL ends with a slash and the path begins with one",
                                "the request goes to " + server + value + ", which most servers do not know",
                                "drop the slash before the path"});
        else if (!server.ends_with('/') && !opens)
            m_findings.error("no-slash", place,
                             {"neither the server's URL ends with a slash nor the path begins with one",
                              "the request goes to " + server + value, "end the server's URL with a slash"});
    }

    const Host& m_host;
    const PreflightSettings& m_settings;
    Findings m_findings{"endpoints"};
};

}  // namespace

PreflightSubject examineEndpoints(const Host& host) { return Endpoints(host).examine(); }

}  // namespace torvel::preflight
