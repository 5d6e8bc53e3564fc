#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace torvel {

// A valid URI reference (RFC 3986), kept as written. Relative references are URLs too ("a?x=1"). Immutable;
// any thread.
class URL {
  public:
    // Strict RFC 3986: no spaces, no non-ASCII characters, no stray "%". The empty text is no URL.
    static std::optional<URL> parse(std::string_view text);
    // The file URL of a path; a relative path is taken from the current directory.
    static URL file(std::string_view path);

    // The text as written, whether absolute or not.
    const std::string& absoluteString() const { return m_text; }

    // Each absent when the URL has no such component. Scheme and host are as written, not case-folded;
    // the host of an IPv6 literal stands without its brackets; an empty host is none.
    std::optional<std::string> scheme() const;
    std::optional<std::string> host() const;
    // Also absent when the number is above 65535, which RFC 3986 allows and no transport has.
    std::optional<std::uint16_t> port() const;
    // Percent-decoded, without a check that the bytes are UTF-8; empty when the URL has no path.
    std::string path() const;
    // As written, valid as long as this URL is neither changed nor destroyed.
    std::string_view encodedPath() const { return text(m_path); }
    std::optional<std::string_view> encodedQuery() const { return textIfAny(m_query); }

    // Resolves a reference against this URL as its base (RFC 3986, 5.2). Absent when the reference is not
    // valid or this URL has no scheme.
    std::optional<URL> resolving(std::string_view reference) const;

    // This URL with the component, percent-encoded as needed, at the end of its path.
    URL appendingPathComponent(std::string_view component) const;

    bool operator==(const URL&) const = default;

  private:
    // A component's place in the text, found by the one parse.
    struct Span {
        std::uint32_t begin = 0, end = 0;
        bool present = false;
        bool operator==(const Span&) const = default;
    };

    explicit URL(std::string text) : m_text(std::move(text)) {}
    std::string_view text(const Span& span) const {
        return std::string_view(m_text).substr(span.begin, span.end - span.begin);
    }
    std::optional<std::string_view> textIfAny(const Span& span) const;

    std::string m_text;
    Span m_scheme, m_host, m_port, m_path, m_query;
};

}  // namespace torvel
