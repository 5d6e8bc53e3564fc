#include "TorvelPlatform/http/URLCache.h"
#include "support/Fetching.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

using namespace testing;

using Fields = std::vector<HTTPHeaders::Field>;

HTTPHeaders headersOf(const Fields& fields) {
    HTTPHeaders headers;
    for (const auto& [name, value] : fields) headers.set(name, value);
    return headers;
}

URLCache::CachedResponse answerOf(const Fields& fields, int status = 200, std::string body = "kept") {
    return {{*URL::parse("http://a.example/"), status, headersOf(fields)}, Data(std::move(body))};
}

TEST(URLCache, KeepsWhatProtocolCachingAllows) {
    const std::string date = "Sun, 06 Nov 1994 08:49:37 GMT";
    const struct {
        const char* name;
        Fields answer;
        bool kept;
        Fields request = {};
        int status = 200;
        const char* method = "GET";
    } rows[] = {
        {"max-age", {{"Cache-Control", "private, max-age=60"}}, true},
        {"quoted max-age", {{"cache-control", "MAX-AGE=\"60\""}}, true},
        {"huge max-age", {{"Cache-Control", "max-age=99999999999999999999"}}, true},
        {"max-age 0", {{"Cache-Control", "max-age=0"}}, false},
        {"malformed max-age", {{"Cache-Control", "max-age=soon"}}, false},
        {"already old", {{"Cache-Control", "max-age=60"}, {"Age", "60"}}, false},
        {"expires later", {{"Date", date}, {"Expires", "Sunday, 06-Nov-94 08:50:37 GMT"}}, true},
        {"expires in some thousand years", {{"Expires", "Fri, 31 Dec 9999 23:59:59 GMT"}}, true},
        {"expired", {{"Date", date}, {"Expires", date}}, false},
        {"malformed Expires", {{"Date", date}, {"Expires", "0"}}, false},
        {"max-age wins over Expires", {{"Cache-Control", "max-age=60"}, {"Expires", "0"}}, true},
        {"no freshness", {{"Last-Modified", date}, {"ETag", "\"a\""}}, false},
        {"no-store", {{"Cache-Control", "max-age=60, no-store"}}, false},
        {"no-cache", {{"Cache-Control", "no-cache, max-age=60"}}, false},
        {"no-store inside a quoted text", {{"Cache-Control", "max-age=60, x=\"a, no-store\""}}, true},
        {"request forbids", {{"Cache-Control", "max-age=60"}}, false, {{"Cache-Control", "no-store"}}},
        {"authorised", {{"Cache-Control", "max-age=60"}}, false, {{"Authorization", "x"}}},
        {"authorised but public", {{"Cache-Control", "public, max-age=60"}}, true, {{"Authorization", "x"}}},
        {"sets a cookie", {{"Cache-Control", "max-age=60"}, {"Set-Cookie", "a=b"}}, false},
        {"any variation", {{"Cache-Control", "max-age=60"}, {"Vary", "*"}}, false},
        {"variation by cookies", {{"Cache-Control", "max-age=60"}, {"Vary", "Accept, cookie"}}, false},
        {"other status", {{"Cache-Control", "max-age=60"}}, false, {}, 404},
        {"other method", {{"Cache-Control", "max-age=60"}}, false, {}, 200, "POST"},
        {"part of it", {{"Cache-Control", "max-age=60"}}, false, {{"Range", "bytes=0-1"}}},
    };
    for (const auto& row : rows) {
        URLCache cache(1000);
        URLRequest request = requestTo("http://a.example/?q#one", row.method);
        request.headers = headersOf(row.request);
        cache.store(request, answerOf(row.answer, row.status));
        URLRequest again = requestTo("http://a.example/?q#two");
        again.headers = headersOf(row.request);
        again.headers.remove("Cache-Control");
        again.headers.remove("Range");
        EXPECT_EQ(cache.cachedResponse(again).has_value(), row.kept) << row.name;
        cache.removeAllCachedResponses();
        EXPECT_FALSE(cache.cachedResponse(again)) << row.name;
    }
}

TEST(URLCache, SelectsByVaryAndBoundsItsBytes) {
    URLCache cache(250);
    const auto request = [](const char* language, const char* path = "/") {
        URLRequest made = requestTo("http://a.example" + std::string(path));
        if (language != nullptr) made.headers.set("Accept-Language", language);
        return made;
    };
    const auto answer = [](std::string body) {
        return answerOf({{"Cache-Control", "max-age=60"}, {"Vary", "accept-language"}}, 200, std::move(body));
    };
    cache.store(request("ar"), answer("marhaban"));
    cache.store(request("en"), answer("hello"));
    EXPECT_EQ(cache.cachedResponse(request("ar"))->data, Data("marhaban"));
    EXPECT_EQ(cache.cachedResponse(request("en"))->data, Data("hello"));
    EXPECT_FALSE(cache.cachedResponse(request(nullptr)));
    cache.store(request("en"), answer("newer"));
    EXPECT_EQ(cache.cachedResponse(request("en"))->data, Data("newer"));

    cache.store(request("en", "/big"), answer(std::string(100, 'x')));
    EXPECT_FALSE(cache.cachedResponse(request("ar"))) << "the oldest goes first";
    EXPECT_TRUE(cache.cachedResponse(request("en", "/big")));
    cache.store(request("en", "/huge"), answer(std::string(1000, 'x')));
    EXPECT_FALSE(cache.cachedResponse(request("en", "/huge")));
    EXPECT_TRUE(cache.cachedResponse(request("en", "/big"))) << "what never fits drives nothing out";

    URLRequest change = request("en", "/big");
    change.httpMethod = "POST";
    cache.store(change, answerOf({}, 200));
    EXPECT_FALSE(cache.cachedResponse(request("en", "/big"))) << "an unsafe method makes it stale";
}

TEST(URLCache, ServesSessions) {
    ScriptedServer server(
        ScriptedServer::answering(response("200 OK", "hello", "Cache-Control: max-age=60\r\n")));
    URLRequest request = requestTo(server.url());
    const auto sentAfterAnother = [&] {
        EXPECT_EQ(fetch(request).data(), "hello");
        return server.requests().size();
    };
    EXPECT_EQ(sentAfterAnother(), 1U);
    EXPECT_EQ(sentAfterAnother(), 1U);
    request.cachePolicy = URLRequestCachePolicy::reloadIgnoringLocalCacheData;
    EXPECT_EQ(sentAfterAnother(), 2U);
    URLCache::shared().removeAllCachedResponses();
    request.cachePolicy = URLRequestCachePolicy::useProtocolCachePolicy;
    EXPECT_EQ(sentAfterAnother(), 3U);
}

}  // namespace
}  // namespace torvel
