#include "TorvelPlatform/foundation/URL.h"
#include "TorvelPlatform/foundation/URLComponents.h"

#include <sstream>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using Text = std::optional<std::string>;

TEST(URL, ComponentsAreThoseOfRFC3986) {
    const std::nullopt_t none = std::nullopt;
    const struct {
        const char* text;
        Text scheme, host;
        std::optional<std::uint16_t> port;
        const char* path;
        std::optional<std::string_view> query;
    } rows[] = {
        {"https://api.example.org:8443/p/q?a=1#f", "https", "api.example.org", 8443, "/p/q", "a=1"},
        {"HTTP://User@Example.ORG", "HTTP", "Example.ORG", none, "", none},
        {"http://[2001:db8::1]:80/x", "http", "2001:db8::1", 80, "/x", none},
        {"http://h:/x?", "http", "h", none, "/x", ""},
        {"http://h:99999/", "http", "h", none, "/", none},
        {"http:///x", "http", none, none, "/x", none},
        {"http://:80/x", "http", none, 80, "/x", none},
        {"file:///a%20b/%C3%A9%25", "file", none, none, "/a b/\u00e9%", none},
        {"mailto:a@b?c", "mailto", none, none, "a@b", "c"},
        {"//h?q#f?g", none, "h", none, "", "q"},
        {"a//b?x=1", none, none, none, "a//b", "x=1"},
        {"#f", none, none, none, "", none},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        const std::optional<URL> url = URL::parse(row.text);
        ASSERT_TRUE(url);
        EXPECT_EQ(url->absoluteString(), row.text);
        EXPECT_EQ(url->scheme(), row.scheme);
        EXPECT_EQ(url->host(), row.host);
        EXPECT_EQ(url->port(), row.port);
        EXPECT_EQ(url->path(), row.path);
        EXPECT_EQ(url->encodedQuery(), row.query);
    }
}

TEST(URL, RefusesWhatIsNoURIReference) {
    const char* const texts[] = {
        "",           "http://a b/", "a b",          "http://h/\u00e9", "%",
        "a%2",        "a%zz",        "http://[::1/", "http://h:80a/",   "1a:b",
        "http://h/[", "a?b^",        "http://h\n",   "\"a\"",           "http://[fe80::1%25en0]/"};
    for (const char* text : texts) EXPECT_FALSE(URL::parse(text)) << text;
    EXPECT_FALSE(URL::parse(std::string_view("a\0b", 3)));
}

// Every example of RFC 3986, 5.4.1 and 5.4.2 (strict), then references with their own dot segments.
TEST(URL, ResolvesReferencesAsRFC3986) {
    std::istringstream rows(R"(
        g:h g:h  g http://a/b/c/g  ./g http://a/b/c/g  g/ http://a/b/c/g/  /g http://a/g  //g http://g
        ?y http://a/b/c/d;p?y  g?y http://a/b/c/g?y  #s http://a/b/c/d;p?q#s  g#s http://a/b/c/g#s
        g?y#s http://a/b/c/g?y#s  ;x http://a/b/c/;x  g;x http://a/b/c/g;x  g;x?y#s http://a/b/c/g;x?y#s
        . http://a/b/c/  ./ http://a/b/c/  .. http://a/b/  ../ http://a/b/  ../g http://a/b/g
        ../.. http://a/  ../../ http://a/  ../../g http://a/g  ../../../g http://a/g
        ../../../../g http://a/g  /./g http://a/g  /../g http://a/g  g. http://a/b/c/g.  .g http://a/b/c/.g
        g.. http://a/b/c/g..  ..g http://a/b/c/..g  ./../g http://a/b/g  ./g/. http://a/b/c/g/
        g/./h http://a/b/c/g/h  g/../h http://a/b/c/h  g;x=1/./y http://a/b/c/g;x=1/y
        g;x=1/../y http://a/b/c/y  g?y/./x http://a/b/c/g?y/./x  g?y/../x http://a/b/c/g?y/../x
        g#s/./x http://a/b/c/g#s/./x  g#s/../x http://a/b/c/g#s/../x  http:g http:g
        https://h/a/../b https://h/b  //h/a/./../b http://h/b
    )");
    const URL base = *URL::parse("http://a/b/c/d;p?q");
    for (std::string reference, target; rows >> reference >> target;)
        EXPECT_EQ(base.resolving(reference).value().absoluteString(), target) << reference;
    EXPECT_EQ(base.resolving("")->absoluteString(), "http://a/b/c/d;p?q");
    EXPECT_EQ(URL::parse("http://h")->resolving("x")->absoluteString(), "http://h/x");
    EXPECT_FALSE(base.resolving("a b"));
    EXPECT_FALSE(URL::parse("b/c")->resolving("d"));
}

TEST(URL, FilePathsComeBackAsGiven) {
    const char* const paths[] = {"/", "/a b/c.plist", "/50%/\u00e9?#[x]", "/not\xFFutf8", "//double"};
    for (const char* path : paths) {
        EXPECT_EQ(URL::file(path).path(), path);
        EXPECT_EQ(URL::file(path).scheme(), "file");
        EXPECT_FALSE(URL::file(path).host());
    }
    EXPECT_EQ(URL::file("/a b/50%").absoluteString(), "file:///a%20b/50%25");
    EXPECT_TRUE(URL::file("x").path().starts_with("/"));
    EXPECT_EQ(URL::file("/a").appendingPathComponent("b c?").absoluteString(), "file:///a/b%20c%3F");
    EXPECT_EQ(URL::file("/a/").appendingPathComponent("/b/c").absoluteString(), "file:///a/b/c");
    EXPECT_EQ(URL::parse("http://h?q#f")->appendingPathComponent("x:y").absoluteString(), "http://h/x:y?q#f");
}

TEST(URLComponents, QueryItemsAreDecodedOnce) {
    const struct {
        const char* text;
        std::vector<URLQueryItem> items;
    } rows[] = {
        {"a?x=%2541", {{"x", "%41"}}},
        {"a?x=1&y&z=", {{"x", "1"}, {"y", std::nullopt}, {"z", ""}}},
        {"a?x=a=b&&%26=%3D+", {{"x", "a=b"}, {"", std::nullopt}, {"&", "=+"}}},
        {"a?", {{"", std::nullopt}}},
        {"http://h/?x=%E2%82%AC#x=2", {{"x", "\u20ac"}}},
    };
    for (const auto& row : rows) {
        const std::optional<URLComponents> components = URLComponents::of(*URL::parse(row.text));
        ASSERT_TRUE(components) << row.text;
        EXPECT_EQ(components->queryItems(), row.items) << row.text;
    }
    EXPECT_FALSE(URLComponents::of(*URL::parse("/a"))->queryItems());
    EXPECT_EQ(URLComponents::of(*URL::parse("http://h/p/q%2F?x"))->path(), "/p/q/");
    EXPECT_FALSE(URLComponents::of(*URL::parse("a?x=%FF")));
    EXPECT_FALSE(URLComponents::of(*URL::parse("%C3?x=1")));
}

}  // namespace
}  // namespace torvel
