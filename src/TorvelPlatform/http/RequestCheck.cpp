#include "TorvelPlatform/http/RequestCheck.h"

#include "TorvelPlatform/http/HeaderText.h"

namespace torvel {
namespace {

SessionError invalid(std::string why) {
    return {SessionError::Kind::invalidRequest, std::move(why), std::nullopt};
}

// Names no more than scheme and host: the rest of a URL often holds a secret.
std::optional<SessionError> urlError(const std::optional<URL>& url) {
    if (!url) return invalid("The request has no URL.");
    const std::string scheme = url->scheme().value_or(""), host = url->host().value_or("");
    if (!equalsIgnoringCase(scheme, "http") && !equalsIgnoringCase(scheme, "https"))
        return invalid("Unsupported URL: its scheme \"" + scheme + "\" is neither http nor https.");
    if (host.empty()) return invalid("Unsupported URL: it names no host.");
    // The client would decode it, and then trust be asked for another name than the one connected to.
    if (host.find('%') != std::string::npos)
        return invalid("Unsupported URL: the host " + host + " is percent-encoded.");
    return std::nullopt;
}

}  // namespace

std::optional<SessionError> requestError(const URLRequest& request, bool hasBody) {
    if (auto error = urlError(request.url)) return error;
    if (!isToken(request.httpMethod)) return invalid("The HTTP method is not a token.");
    if (hasBody && (request.httpMethod == "GET" || request.httpMethod == "HEAD"))
        return invalid("A " + request.httpMethod + " request cannot have a body.");
    for (const auto& [name, value] : request.headers.fields()) {
        if (!isToken(name)) return invalid("The name of a header field is not a token.");
        if (!isFieldValue(value))
            return invalid("The header field " + name + " contains a line break or NUL.");
    }
    return std::nullopt;
}

}  // namespace torvel
