#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// A valid URI reference (RFC 3986), kept as written. Relative references are URLs too ("a?x=1").
class URL {
  public:
    // Strict RFC 3986: no spaces, no non-ASCII characters, no stray "%". The empty text is no URL.
    static std::optional<URL> parse(std::string_view text);
    // The file URL of a path; a relative path is taken from the current directory.
    static URL file(std::string_view path);

    const std::string& absoluteString() const { return m_text; }

    // Each absent when the URL has no such component. Scheme and host are as written, not case-folded;
    // the host of an IPv6 literal stands without its brackets.
    std::optional<std::string> scheme() const;
    std::optional<std::string> host() const;
    std::optional<std::uint16_t> port() const;
    // Percent-decoded; empty when the URL has no path.
    std::string path() const;

    // Resolves a reference against this URL as its base (RFC 3986, 5.2). Absent when either is unfit.
    std::optional<URL> resolving(std::string_view reference) const;

    // For file URLs: this URL with one more path component, percent-encoded as needed.
    URL appendingPathComponent(std::string_view component) const;

    bool operator==(const URL&) const = default;

  private:
    explicit URL(std::string text) : m_text(std::move(text)) {}
    std::string m_text;
};

}  // namespace torvel
