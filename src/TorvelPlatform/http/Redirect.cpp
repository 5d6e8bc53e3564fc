#include "TorvelPlatform/http/Redirect.h"

#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/PercentEncoding.h"
#include "TorvelPlatform/http/HeaderText.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace torvel {
namespace {

bool isRedirect(int status) {
    constexpr std::array followed{301, 302, 303, 307, 308};
    return std::find(followed.begin(), followed.end(), status) != followed.end();
}

bool becomesGET(int status, std::string_view method) {
    if (status == 303) return method != "GET" && method != "HEAD";
    return (status == 301 || status == 302) && method == "POST";
}

bool sameHost(const URL& a, const URL& b) {
    return equalsIgnoringCase(a.host().value_or(""), b.host().value_or(""));
}

bool hasScheme(const URL& url, std::string_view scheme) {
    return equalsIgnoringCase(url.scheme().value_or(""), scheme);
}

HTTPHeaders fieldsForAnotherHost(const HTTPHeaders& sent, const HTTPHeaders& sessionHeaders) {
    HTTPHeaders fields;
    for (const char* name : {"Content-Type", "Accept", "Accept-Language", "Accept-Encoding"})
        if (const auto value = sent.value(name)) fields.set(name, *value);
    if (const auto agent = sessionHeaders.value("User-Agent")) fields.set("User-Agent", *agent);
    return fields;
}

// Servers also write what must not stand in a URL, such as spaces, and browsers put up with it.
std::optional<URL> targetOf(const URL& from, std::string_view location) {
    if (auto target = from.resolving(location)) return target;
    static const CharacterSet& kept =
        *new CharacterSet(CharacterSet::urlQueryAllowed().unionWith(CharacterSet::charactersIn("%#")));
    return from.resolving(percentEncodedBytes(location, kept));
}

// Names scheme and host alone: the rest of a redirect's URL often holds a secret.
SessionError refused(const URL& from, const URL& to, std::string_view why) {
    return {SessionError::Kind::redirectFailed,
            "The redirect from " + from.host().value_or("") + " to " + to.scheme().value_or("") + "://" +
                to.host().value_or("") + " is not followed: " + std::string(why),
            std::nullopt};
}

Redirection redirected(const URLRequest& sent, URL target, int status, const HTTPHeaders& sessionHeaders) {
    Redirection next{sent, true};
    if (!sameHost(*sent.url, target))
        next.request.headers = fieldsForAnotherHost(sent.headers, sessionHeaders);
    if (becomesGET(status, sent.httpMethod)) {
        next.request.httpMethod = "GET";
        next.request.httpBody.reset();
        next.keepsBody = false;
        for (const char* name : {"Content-Type", "Content-Encoding", "Content-Language", "Content-Location"})
            next.request.headers.remove(name);
    }
    next.request.url = std::move(target);
    return next;
}

}  // namespace

std::optional<RedirectDecision> decideRedirect(const URLRequest& sent, bool hasBody,
                                               const HTTPURLResponse& response,
                                               const HTTPHeaders& sessionHeaders) {
    if (!isRedirect(response.statusCode)) return {};
    const std::optional<std::string> location = response.headers.value("Location");
    std::optional<URL> target = location ? targetOf(*sent.url, *location) : std::nullopt;
    if (!target) return {};

    const URL& from = *sent.url;
    if (!hasScheme(*target, "http") && !hasScheme(*target, "https"))
        return refused(from, *target, "it does not lead to an HTTP server.");
    if (!target->host()) return {};
    if (hasScheme(from, "https") && !hasScheme(*target, "https"))
        return refused(from, *target, "it leads from a secure connection to an open one.");

    const bool crossesHosts = !sameHost(from, *target);
    Redirection next = redirected(sent, std::move(*target), response.statusCode, sessionHeaders);
    if (crossesHosts && hasBody && next.keepsBody)
        return refused(from, *next.request.url, "it would hand the request's body to another host.");
    return next;
}

}  // namespace torvel
