#include "TorvelPlatform/foundation/URL.h"

#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/PercentEncoding.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <limits>

#include <uriparser/Uri.h>

namespace torvel {
namespace {

// uriparser's parser, whose ranges point into the text that it was given.
class ParsedURI {
  public:
    ParsedURI() = default;
    explicit ParsedURI(std::string_view text)
        : m_valid(uriParseSingleUriExA(&m_uri, text.data(), text.data() + text.size(), nullptr) ==
                  URI_SUCCESS) {}
    ~ParsedURI() { uriFreeUriMembersA(&m_uri); }
    ParsedURI(const ParsedURI&) = delete;
    ParsedURI& operator=(const ParsedURI&) = delete;

    bool valid() const { return m_valid; }
    UriUriA& uri() { return m_uri; }

  private:
    UriUriA m_uri{};
    bool m_valid = false;
};

// Where the path starts (RFC 3986, appendix B): after the scheme and the authority, if any.
std::size_t pathBegin(std::string_view text, std::size_t afterScheme) {
    if (!text.substr(afterScheme).starts_with("//")) return afterScheme;
    return std::min(text.find_first_of("/?#", afterScheme + 2), text.size());
}

std::optional<std::string> owned(std::optional<std::string_view> text) {
    if (!text) return std::nullopt;
    return std::string(*text);
}

std::optional<std::string> composed(const UriUriA& uri) {
    int length = 0;
    if (uriToStringCharsRequiredA(&uri, &length) != URI_SUCCESS) return std::nullopt;
    std::string text(static_cast<std::size_t>(length), '\0');
    if (uriToStringA(text.data(), &uri, length + 1, nullptr) != URI_SUCCESS) return std::nullopt;
    return text;
}

// uriparser counts in int.
constexpr std::size_t maximumLength = std::numeric_limits<int>::max() / 2;

}  // namespace

std::optional<URL> URL::parse(std::string_view text) {
    if (text.empty() || text.size() > maximumLength) return std::nullopt;
    ParsedURI parsed(text);
    if (!parsed.valid()) return std::nullopt;

    const auto place = [text](const char* first, const char* afterLast) {
        return Span{static_cast<std::uint32_t>(first - text.data()),
                    static_cast<std::uint32_t>(afterLast - text.data()), true};
    };
    // An empty range may point anywhere: uriparser has a static text for an empty host.
    const auto placeUnlessEmpty = [place](const UriTextRangeA& range) {
        return range.first == range.afterLast ? Span{} : place(range.first, range.afterLast);
    };
    const UriUriA& uri = parsed.uri();
    URL url{std::string(text)};
    url.m_scheme = placeUnlessEmpty(uri.scheme);
    url.m_host = placeUnlessEmpty(uri.hostText);
    url.m_port = placeUnlessEmpty(uri.portText);
    if (uri.query.first != nullptr) url.m_query = place(uri.query.first, uri.query.afterLast);
    const std::size_t path = pathBegin(text, url.m_scheme.present ? url.m_scheme.end + 1 : 0);
    const std::size_t pathEnd = std::min(text.find_first_of("?#", path), text.size());
    url.m_path = place(text.data() + path, text.data() + pathEnd);
    return url;
}

URL URL::file(std::string_view path) {
    std::string absolute(path);
    if (!path.starts_with('/')) {
        std::error_code ignored;
        absolute = std::filesystem::current_path(ignored).native() + '/' + absolute;
    }
    return *parse("file://" + percentEncodedBytes(absolute, CharacterSet::urlPathAllowed()));
}

std::optional<std::string_view> URL::textIfAny(const Span& span) const {
    if (!span.present) return std::nullopt;
    return text(span);
}

std::optional<std::string> URL::scheme() const { return owned(textIfAny(m_scheme)); }

std::optional<std::string> URL::host() const { return owned(textIfAny(m_host)); }

std::optional<std::uint16_t> URL::port() const {
    const std::string_view digits = text(m_port);
    std::uint16_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec != std::errc()) return std::nullopt;
    return number;
}

std::string URL::path() const { return percentDecodedBytes(encodedPath()).value_or(std::string()); }

std::optional<URL> URL::resolving(std::string_view reference) const {
    ParsedURI base(m_text);
    ParsedURI relative(reference);
    ParsedURI target;
    if (!base.valid() || !relative.valid()) return std::nullopt;
    const int status = uriAddBaseUriExA(&target.uri(), &relative.uri(), &base.uri(), URI_RESOLVE_STRICTLY);
    const std::optional<std::string> text = status == URI_SUCCESS ? composed(target.uri()) : std::nullopt;
    return text ? parse(*text) : std::nullopt;
}

URL URL::appendingPathComponent(std::string_view component) const {
    component.remove_prefix(std::min(component.find_first_not_of('/'), component.size()));
    std::string addition = percentEncodedBytes(component, CharacterSet::urlPathAllowed());
    if (!encodedPath().ends_with('/')) addition.insert(addition.begin(), '/');
    std::string longer = m_text;
    return *parse(longer.insert(m_path.end, addition));
}

}  // namespace torvel
