#include "TorvelPlatform/http/Validation.h"

#include "TorvelPlatform/http/HeaderText.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace torvel {
namespace {

using Kind = SessionError::Kind;

// "type/subtype" in lower case; both empty when the text is no media type.
struct MediaType {
    std::string type;
    std::string subtype;

    explicit MediaType(std::string_view text) {
        text = trimmed(text.substr(0, text.find(';')));
        const std::size_t slash = text.find('/');
        if (slash == std::string_view::npos) return;
        if (!isToken(text.substr(0, slash)) || !isToken(text.substr(slash + 1))) return;
        type = lowercased(std::string(text.substr(0, slash)));
        subtype = lowercased(std::string(text.substr(slash + 1)));
    }

    bool valid() const { return !type.empty(); }
    bool matchesAll() const { return type == "*" && subtype == "*"; }
    int specificity() const { return (type == "*" ? 0 : 1) + (subtype == "*" ? 0 : 1); }
    bool allows(const MediaType& other) const {
        return (type == "*" || type == other.type) && (subtype == "*" || subtype == other.subtype);
    }
};

bool isExcluded(std::string_view range) {
    for (const std::string_view parameter : listItems(range, ';')) {
        if (parameter.starts_with("q=") || parameter.starts_with("Q="))
            return std::strtod(std::string(parameter.substr(2)).c_str(), nullptr) <= 0.0;
    }
    return false;
}

// The most specific range that fits decides (RFC 9110, 12.5.1).
bool isAcceptable(std::string_view accept, const std::optional<std::string>& contentType) {
    const MediaType given(contentType.value_or(""));
    int best = -1;
    bool acceptable = false;
    for (const std::string_view text : listItems(accept)) {
        const MediaType range(text);
        const bool fits = range.valid() && (given.valid() ? range.allows(given) : range.matchesAll());
        if (!fits || range.specificity() < best) continue;
        acceptable = !isExcluded(text) || (acceptable && range.specificity() == best);
        best = range.specificity();
    }
    return acceptable;
}

}  // namespace

std::optional<SessionError> validationError(const std::optional<std::string>& accept,
                                            const HTTPURLResponse& response, bool emptyBody) {
    const auto from = [&] { return response.url.host().value_or(""); };
    if (response.statusCode < 200 || response.statusCode > 299) {
        return SessionError{Kind::unacceptableStatusCode,
                            from() + " answered with the unacceptable status code " +
                                std::to_string(response.statusCode) + ".",
                            std::nullopt};
    }
    const std::optional<std::string> contentType = response.headers.value("Content-Type");
    if (emptyBody || !accept || isAcceptable(*accept, contentType)) return std::nullopt;
    return SessionError{Kind::unacceptableContentType,
                        from() + " answered with " +
                            (contentType ? "the content type \"" + *contentType + "\"" : "no content type") +
                            ", which \"Accept: " + *accept + "\" does not allow.",
                        std::nullopt};
}

std::optional<SessionError> emptinessError(std::string_view method, const HTTPURLResponse& response,
                                           bool emptyBody) {
    const bool mayBeEmpty = response.statusCode == 204 || response.statusCode == 205 || method == "HEAD";
    if (!emptyBody || mayBeEmpty) return std::nullopt;
    return SessionError{Kind::emptyResponse,
                        response.url.host().value_or("") + " answered with status code " +
                            std::to_string(response.statusCode) + " and no bytes.",
                        std::nullopt};
}

}  // namespace torvel
