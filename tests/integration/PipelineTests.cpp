#include "TorvelLibrary/Data/Remote/Interceptors/GenericRequestHeaderInterceptor.h"
#include "TorvelLibrary/Data/Remote/Interceptors/GenericResponseInterceptor.h"
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"
#include "TorvelLibrary/Data/Remote/Networking/TorvelNetworkClient.h"
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelPlatform/http/URLCache.h"
#include "TorvelTesting/HostFixture.h"
#include "TorvelTesting/SandboxHost.h"
#include "sandbox/Sandbox.h"

#include <chrono>

#include <gmock/gmock.h>

namespace torvel {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

// How one call ended: exactly one of the two.
struct Ending {
    std::optional<std::string> success;
    std::optional<APITimeError> error;
    int callbacks = 0;

    OnSuccess onSuccess() {
        return [this](Data bytes) {
            ++callbacks;
            success = std::move(bytes).raw();
        };
    }
    OnError onError() {
        return [this](const Decodable& failure) {
            ++callbacks;
            error = dynamic_cast<const APITimeError&>(failure);
        };
    }
};

struct Appending final : RequestWrapper {
    explicit Appending(std::string what) : text(std::move(what)) {}
    URLRequest wrapRequest(URLRequest& request) override {
        URLRequest next = request;
        if (next.httpBody) next.httpBody = Data(next.httpBody->raw() + text);
        request.httpBody = Data("overwritten by what is returned");
        return next;
    }
    std::string text;
};

struct Bracketing final : ResponseParser {
    explicit Bracketing(std::string what) : text(std::move(what)) {}
    Data parseResponse(Data data) override { return Data(text + "(" + std::move(data).raw() + ")"); }
    std::string text;
};

// A host and its backend, over plain http: trust has tests of its own.
struct Pipeline : testing::HostFixture {
    Pipeline() : m_sandbox(sandbox::Sandbox::start({.tls = false}).value()) {
        TorvelLibraryBuilder().setServerURL(m_sandbox->url()).build();
    }

    Ending get(const std::string& target, const ResponseInterceptors& parsers = {}) const {
        Ending ending;
        m_client.getRequest(target, "application/json", {}, parsers, ending.onSuccess(), ending.onError());
        return finished(ending);
    }

    // Runs the main queue until the call ended, then whatever else was posted.
    static Ending finished(Ending& ending) {
        DispatchQueue::main().runUntil([&] { return ending.callbacks > 0; }, std::chrono::seconds(20));
        DispatchQueue::main().drain();
        EXPECT_EQ(ending.callbacks, 1);
        return ending;
    }

    std::string misbehave(const std::string& how) const { return "/misbehave/" + how; }

    const std::unique_ptr<sandbox::Sandbox> m_sandbox;
    const TorvelNetworkClient m_client;
};

TEST_F(Pipeline, TargetsBecomeURLs) {
    TorvelLibraryBuilder().setServerURL("https://api.example/v1/").build();
    const struct {
        const char *target, *url;
    } rows[] = {
        {"login", "https://api.example/v1/login"},
        {"/api/http", "https://api.example/v1//api/http"},
        {"http://b.example/two words", "http://b.example/two%20words"},
        {"https://b.example/a%20b", "https://b.example/a%2520b"},  // escaped again
        {"HTTPS://b.example", "https://api.example/v1/HTTPS://b.example"},
        {"httpx", "httpx"},
        {"http:// b/", "http://%20b/"},
        {"two words", "none"},
        {"http://[::1", "none"},  // no URL whole, and none behind the server's
    };
    for (const auto& row : rows) {
        const auto request = m_client.getRequest(row.target);
        EXPECT_EQ(request ? request->url->absoluteString() : "none", row.url) << row.target;
    }
}

TEST_F(Pipeline, ATargetThatIsNoURLFailsAtOnceOnTheCallersThread) {
    Ending ending;
    m_client.postRequest("two words", Data("x"), "text/plain", {}, {}, ending.onSuccess(), ending.onError());
    ASSERT_EQ(ending.callbacks, 1);
    EXPECT_EQ(ending.error->localizedDescription(), "Unexpected Error");
    EXPECT_EQ(ending.error->errorCodeInResponse(), "-1");
    EXPECT_FALSE(ending.error->receivedDataInResponse().has_value());
}

TEST_F(Pipeline, AnswersAreRouted) {
    using Kind = SessionError::Kind;
    const Kind refused = Kind::unacceptableStatusCode;
    const struct {
        const char* name;
        std::string target;
        std::optional<std::string> success;  // after the interceptors
        const char* code = "";
        std::optional<std::string> received = {};
        const char* description = "";  // a part of it
        Kind kind = {};
    } rows[] = {
        {"success", misbehave("status?body=abc&type=text/plain"), "b(a(abc))"},
        {"no content", misbehave("status?code=204"), "b(a())"},
        {"structured error", misbehave("status?code=400&body=%7B%22message%22:%22x%22%7D"),
         "b(a({\"message\":\"x\"}))"},
        {"structured error, a scalar", misbehave("status?code=500&body=1"), "b(a(1))"},
        {"plain-text error", misbehave("status?code=500&body=oops"), {}, "500", "oops", "JSON", refused},
        {"unauthorised", misbehave("status?code=401&body=%7B%7D"), {}, "401", "{}", "401", refused},
        {"error without a body", misbehave("status?code=503"), {}, "503", {}, "503", refused},
        {"empty success", misbehave("status?code=200"), {}, "200", {}, "", Kind::emptyResponse},
        {"cut answer", misbehave("truncate?framing=length"), {}, "200", {}, "", Kind::connectionLost},
        {"reset", misbehave("reset"), {}, "-1", {}, "", Kind::connectionLost},
        {"refused", "http://127.0.0.1:1/", {}, "-1", {}, "127.0.0.1", Kind::cannotConnect},
        {"not http", "httpx", {}, "-1", {}, "", Kind::invalidRequest},
    };
    const ResponseInterceptors parsers{std::make_shared<Bracketing>("a"), std::make_shared<Bracketing>("b")};
    for (const auto& row : rows) {
        const Ending ending = get(row.target, parsers);
        EXPECT_EQ(ending.success, row.success) << row.name;
        ASSERT_EQ(ending.error.has_value(), !row.success) << row.name;
        if (!ending.error) continue;
        EXPECT_EQ(ending.error->errorCodeInResponse(), row.code) << row.name;
        EXPECT_THAT(ending.error->localizedDescription(), HasSubstr(row.description)) << row.name;
        EXPECT_NE(ending.error->localizedDescription(), "") << row.name;
        ASSERT_TRUE(ending.error->failure().has_value()) << row.name;
        EXPECT_EQ(ending.error->failure()->kind, row.kind) << row.name;
        if (!row.received) continue;
        EXPECT_EQ(ending.error->receivedDataInResponse(), Data(*row.received)) << row.name;
    }
}

TEST_F(Pipeline, EmptyCallbacksAreNotCalledAndLogoutCancelsEverything) {
    for (const std::string& target :
         {misbehave("status?body=1"), misbehave("status?code=401"), std::string(":")})
        m_client.getRequest(target, "a/b", {}, {}, nullptr, nullptr);
    Ending uploaded, hung;
    m_client.multipartRequest("/echo", "POST", Data("x"), "a/b", "n", {}, {}, uploaded.onSuccess(),
                              uploaded.onError(), {});
    EXPECT_TRUE(finished(uploaded).success.has_value());
    m_client.getRequest(misbehave("hang"), "a/b", {}, {}, hung.onSuccess(), hung.onError());
    NetworkDispatcher::cancelAll();
    EXPECT_EQ(finished(hung).error->failure()->kind, SessionError::Kind::cancelled);
    EXPECT_EQ(hung.error->errorCodeInResponse(), "-1");
}

TEST_F(Pipeline, RequestInterceptorsRunInOrderAndAreLogged) {
    const RequestInterceptors wrappers{std::make_shared<Appending>("1"), std::make_shared<Appending>("2")};
    Ending ending;
    const std::string log = logOf([&] {
        m_client.postRequest("/echo", Data("0"), "text/plain", wrappers, {}, ending.onSuccess(),
                             ending.onError());
        finished(ending);
    });
    EXPECT_EQ(m_sandbox->exchanges().back().body, "012");
    std::string expected;
    for (const char* message :
         {"TARGET IS /echo", "Request URL - http://[^\n]*/echo", "Request Body Initial - 0",
          "Request Body After Each Interceptors - 01", "Request Body After Each Interceptors - 012",
          "Response As received - \\{[^\n]*", "Response After Interceptors - \\{[^\n]*"})
        expected += std::string("[^\n]* -> ") + message + "\n";
    EXPECT_THAT(log, ::testing::MatchesRegex(expected));
}

TEST_F(Pipeline, AnUploadIsOneFormPartWithProgressAndAnyStatusSucceeds) {
    Ending ending;
    std::vector<double> progress;
    m_client.multipartRequest(misbehave("status?code=500&body=oops"), "POST", Data("%PDF-1.7"),
                              "text/ignored", "statement \"1\".pdf", {}, {}, ending.onSuccess(),
                              ending.onError(), [&](double fraction) {
                                  EXPECT_EQ(ending.callbacks, 0);
                                  progress.push_back(fraction);
                              });
    EXPECT_EQ(finished(ending).success, "oops");
    ASSERT_FALSE(progress.empty());
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    EXPECT_EQ(progress.back(), 1.0);
    EXPECT_THAT(
        m_sandbox->exchanges().back().body,
        HasSubstr("Content-Disposition: form-data; name=\"file\"; filename=\"statement %221%22.pdf\"\r\n"
                  "Content-Type: application/pdf\r\n\r\n%PDF-1.7\r\n--"));
}

TEST_F(Pipeline, EveryResponseEmptiesTheSharedCache) {
    const URLRequest request(*URL::parse("http://kept.example/"));
    for (const std::string& target : {misbehave("status?body=x"), misbehave("reset")}) {
        HTTPURLResponse response{*request.url, 200, {}};
        response.headers.set("Cache-Control", "max-age=3600");
        URLCache::shared().store(request, {response, Data("kept")});
        ASSERT_TRUE(URLCache::shared().cachedResponse(request).has_value());
        get(target);
        EXPECT_FALSE(URLCache::shared().cachedResponse(request).has_value()) << target;
    }
}

TEST_F(Pipeline, MissingConfigurationStopsTheProcess) {
    TorvelLibrary::sharedInstance()->requestTimeoutInterval.reset();
    EXPECT_DEATH(get("/echo"), "requestTimeoutInterval");
    TorvelLibrary::sharedInstance()->serverURL.reset();
    EXPECT_DEATH(get("/echo"), "serverURL");
    URLRequest request(*URL::parse("http://a.example/"));
    request.url.reset();
    TorvelLibraryBuilder().build();
    EXPECT_DEATH(NetworkDispatcher::consumeRequest(request, "", {}, {}, {}, {}), "without a URL");
}

// The whole secure path: pinned TLS, both directions sealed, in both envelope forms.
TEST_F(Pipeline, EncryptedRequestsRunOverPinnedTLS) {
    const testing::SandboxHost host;
    for (const WrapperConfig flavour : {WrapperConfig::VelmMoney, WrapperConfig::QuentaMerchantApp}) {
        TorvelLibrary::sharedInstance()->wrapperConfig = flavour;
        const std::string key = AES256CBC::generatePassword();
        Ending ending;
        m_client.postRequest("/echo", Data("{\"secret\":\"€\"}"), "application/json",
                             {std::make_shared<EncryptRequestInterceptor>(key)},
                             {std::make_shared<DecryptResponseInterceptor>(key)}, ending.onSuccess(),
                             ending.onError());
        ASSERT_TRUE(finished(ending).success.has_value()) << ending.error->localizedDescription();
        EXPECT_THAT(*ending.success, HasSubstr("secret"));
        const sandbox::Exchange exchange = host.backend().exchanges().back();
        EXPECT_EQ(exchange.plainText, "{\"secret\":\"€\"}");
        EXPECT_EQ(exchange.keyText, key);
        EXPECT_THAT(exchange.body, Not(HasSubstr("secret")));
        EXPECT_THAT(exchange.answer, Not(HasSubstr("secret")));
    }
}

}  // namespace
}  // namespace torvel
