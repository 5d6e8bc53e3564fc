#include "TorvelPlatform/http/Session.h"
#include "TorvelTesting/TemporaryHost.h"
#include "support/Fetching.h"

#include <atomic>
#include <cmath>
#include <future>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace torvel {
namespace {

using namespace testing;
using Phase = SessionError::Phase;
using std::string_literals::operator""s;

TEST(Session, SendsRequestsAsGiven) {
    const struct {
        const char* method;
        std::optional<std::string> body;
        const char *contentType, *contentLength;
    } rows[] = {
        {"GET", {}, "(none)", "(none)"},
        {"POST", "a=b", "(none)", "3"},
        {"POST", "", "text/plain", "0"},
        {"POST", {}, "(none)", "0"},
        {"PUT", "{}", "text/plain", "2"},
        {"DELETE", "{}", "(none)", "2"},
        {"DELETE", {}, "(none)", "(none)"},
        {"PATCH", "x", "(none)", "1"},
        {"X-CUSTOM", "\0x"s, "(none)", "2"},
        {"PROPFIND", {}, "text/xml", "(none)"},
        {"POST", std::string(3'000'000, 'x'), "(none)", "3000000"},
    };
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    Session session = plainSession();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.method);
        URLRequest request = requestTo(server.url("/a/../b?q=%20#fragment"), row.method);
        if (row.body) request.httpBody = Data(*row.body);
        if (row.contentType != "(none)"s) request.headers.set("content-type", row.contentType);
        request.headers.set("Content-Length", "99");
        request.headers.set("Transfer-Encoding", "chunked");
        request.headers.set("X-Empty", "");
        EXPECT_EQ(fetch(session, request).outcome(), "ok");
        const auto sent = server.requests().back();
        EXPECT_TRUE(sent.head.starts_with(row.method + " /a/../b?q=%20 HTTP/1.1\r\n"s)) << sent.head;
        EXPECT_EQ(sent.body, row.body.value_or(""));
        EXPECT_EQ(sent.field("Content-Type"), row.contentType);
        EXPECT_EQ(sent.field("Content-Length"), row.contentLength);
        EXPECT_EQ(sent.field("Transfer-Encoding"), "(none)");
        EXPECT_EQ(sent.field("Expect"), "(none)");
        EXPECT_EQ(sent.field("X-Empty"), "");
    }
    EXPECT_EQ(server.connections(), 1U);
}

TEST(Session, RefusesWhatCannotBeSent) {
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    const auto url = [](const char* text) {
        return [text](URLRequest& request) { request.url = URL::parse(text); };
    };
    const auto header = [](std::string name, std::string value) {
        return [=](URLRequest& request) { request.headers.set(name, value); };
    };
    const struct {
        const char* name;
        std::function<void(URLRequest&)> spoil;
    } rows[] = {
        {"no URL", [](URLRequest& request) { request.url.reset(); }},
        {"relative", url("/a")},
        {"a file", url("file:///etc/passwd")},
        {"no host", url("http:///a")},
        {"encoded host", url("http://127.0.0.%31/")},
        {"GET with a body", [](URLRequest& request) { request.httpBody = Data(""); }},
        {"method is no token",
         [](URLRequest& request) { request.httpMethod = "GET / HTTP/1.1\r\nX: y\r\n\r\nGET"; }},
        {"method is empty", [](URLRequest& request) { request.httpMethod = ""; }},
        {"line break in a value", header("X", "a\r\nY: b")},
        {"line feed in a value", header("X", "a\nY: b")},
        {"NUL in a value", header("X", "a\0b"s)},
        {"line break in a name", header("X: a\r\nY", "b")},
        {"space in a name", header("X ", "b")},
        {"line break in a cookie", header("Cookie", "a\r\nY: b")},
    };
    Session session = plainSession();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        URLRequest request = requestTo(server.url());
        row.spoil(request);
        const Answer answer = fetch(session, request);
        EXPECT_EQ(answer.failure(), Kind::invalidRequest);
        EXPECT_FALSE(answer.response.response || answer.response.data || answer.response.error->maybeSent);
    }
    EXPECT_EQ(server.connections(), 0U);
}

TEST(Session, DefaultFieldsGiveWayToTheRequests) {
    const TemporaryHost host;
    host.addResource("Info.plist", "{ CFBundleShortVersionString = \"2.5\"; }");
    const URLSessionConfiguration configuration = URLSessionConfiguration::defaults();
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    Session session(configuration);
    URLRequest request = requestTo(server.url());
    request.headers.set("user-agent", "mine");
    ASSERT_EQ(fetch(session, request).outcome(), "ok");
    const auto sent = server.requests().back();
    EXPECT_EQ(sent.field("User-Agent"), "mine");
    EXPECT_EQ(sent.field("Accept-Encoding"), "br;q=1.0, gzip;q=0.9, deflate;q=0.8");
    EXPECT_NE(sent.field("Accept-Language").find(";q=1.0"), std::string::npos);
    EXPECT_THAT(*configuration.headers.value("User-Agent"),
                ::testing::StartsWith("http_tests/2.5 (test-host; Linux) Torvel/"));
}

TEST(Session, SaysThatAServerCannotBeReached) {
    std::string gone;
    {
        ScriptedServer server(ScriptedServer::answering(okAnswer));
        gone = server.url();
    }
    ScriptedServer refusing(ScriptedServer::answering(response("403 Forbidden", "no")));
    const struct {
        std::string url, proxy;
        Kind kind;
        const char* outcome;
    } rows[] = {
        {gone, "", Kind::cannotConnect, "The server 127.0.0.1 cannot be reached: Connection refused."},
        {"http://nowhere.invalid/", "", Kind::cannotFindHost,
         "The host nowhere.invalid cannot be found: Could not resolve host: nowhere.invalid."},
        {"https://a.example/", gone, Kind::cannotConnect,
         "The server a.example cannot be reached: Connection refused."},
        {"https://a.example/", refusing.url(), Kind::cannotConnect,
         "The server a.example cannot be reached: CONNECT tunnel failed, response 403."},
    };
    for (const auto& row : rows) {
        ::setenv("https_proxy", row.proxy.c_str(), 1);
        Session session = plainSession();
        const Answer answer = fetch(session, requestTo(row.url));
        ::unsetenv("https_proxy");
        EXPECT_EQ(answer.failure(), row.kind) << row.url << row.proxy;
        EXPECT_TRUE(answer.response.error->isOffline() && !answer.response.error->maybeSent);
        EXPECT_EQ(answer.outcome(), row.outcome);
    }
}

TEST(Session, SurvivesThatNoDescriptorIsLeft) {
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    Session session = plainSession();
    EXPECT_EQ(fetch(session, requestTo(server.url())).outcome(), "ok");
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{3, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    const Answer answer = fetch(session, requestTo(server.url("/", "localhost")));
    Session late = plainSession();
    const Answer other = fetch(late, requestTo(server.url()));
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(answer.failure(), Kind::cannotConnect) << answer.outcome();
    EXPECT_EQ(other.failure(), Kind::cannotConnect) << other.outcome();
    EXPECT_EQ(fetch(session, requestTo(server.url("/", "localhost"))).outcome(), "ok");
}

Session sessionOfOneConnection() {
    URLSessionConfiguration configuration;
    configuration.maximumConnectionsPerHost = 0;  // counts as one
    return Session(configuration);
}

TEST(Session, CancellingTakesARequestOutOfTheQueueForAConnection) {
    ScriptedServer server({[](Peer& peer) { peer.stall(); }, ScriptedServer::answering(okAnswer)});
    Session session = sessionOfOneConnection();
    std::string order;
    const auto start = [&](const char* name) {
        const auto note = [&order, name](const DataResponse& answer) {
            order += std::string(name) + (answer.error ? " cancelled, " : " ok, ");
        };
        return session.request(requestTo(server.url())).responseData(DispatchQueue::main(), note);
    };
    const RequestHandle stalled = start("stalled"), waiting = start("waiting"), last = start("last");
    const auto reaches = [&](std::string_view wanted) {
        DispatchQueue::main().runUntil([&] { return order == wanted; }, std::chrono::seconds(20));
        EXPECT_EQ(order, wanted);
    };
    waiting.cancel();
    reaches("waiting cancelled, ");
    stalled.cancel();
    reaches("waiting cancelled, stalled cancelled, last ok, ");
}

TEST(Session, SendsNothingTwice) {
    const auto dies = [](Peer& peer) {
        peer.answer(okAnswer);
        peer.receive();  // and closes the kept-alive connection
    };
    for (const char* method : {"POST", "GET"}) {
        SCOPED_TRACE(method);
        ScriptedServer server({dies, ScriptedServer::answering(okAnswer)});
        Session session = plainSession();
        const URLRequest request = requestTo(server.url(), method);
        ASSERT_EQ(fetch(session, request).outcome(), "ok");
        EXPECT_EQ(fetch(session, request).failure(), Kind::connectionLost);
        EXPECT_EQ(server.requests().size(), 2U);
        EXPECT_EQ(fetch(session, request).outcome(), "ok");
    }
}

// It concerns the request that waits for this very connection.
TEST(Session, HeedsTheServersKeepAliveHint) {
    URLSessionConfiguration configuration;
    configuration.maximumConnectionsPerHost = 1;
    for (const auto& [hint, connections] : {std::pair{"timeout=1", 2U}, std::pair{"max=9, timeout=5", 1U}}) {
        ScriptedServer server(
            ScriptedServer::answering(response("200 OK", "hello", "Keep-Alive: "s + hint + "\r\n")));
        Session session(configuration);
        session.request(requestTo(server.url())).responseData(DispatchQueue::main(), {});
        fetch(session, requestTo(server.url()));
        EXPECT_EQ(server.connections(), connections) << hint;
    }
}

TEST(Session, SaysWhereTimeRanOutAndWhetherAnythingWasSent) {
    // A listener that accepts nobody: once its backlog is full, further connections hang.
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0), first = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{
        .sin_family = AF_INET, .sin_port = 0, .sin_addr = {htonl(INADDR_LOOPBACK)}, .sin_zero{}};
    socklen_t size = sizeof address;
    ::listen((::bind(listener, reinterpret_cast<sockaddr*>(&address), size), listener), 0);
    ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
    ::connect(first, reinterpret_cast<sockaddr*>(&address), size);
    const std::string full = "127.0.0.1:" + std::to_string(ntohs(address.sin_port));
    const struct {
        Phase phase;
        bool maybeSent;
        const char* answered;  // nullptr: nothing is read
        int status = 0;
        const char* scheme = "http://";
        std::size_t body = 1;
    } rows[] = {
        {Phase::connecting, false, nullptr},
        {Phase::securing, false, nullptr, 0, "https://"},
        {Phase::sending, true, nullptr, 0, "http://", 50'000'000},
        {Phase::waiting, true, ""},
        {Phase::receiving, true, "HTTP/1.1 200 OK\r\nContent-"},
        {Phase::receiving, true, "HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nabc", 200},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.phase));
        ScriptedServer server([&](Peer& peer) {
            if (row.answered != nullptr) peer.answer(row.answered);
            peer.pause(60'000);
        });
        const std::string place = row.phase == Phase::connecting ? full : server.url().substr(7);
        URLRequest request = requestTo(row.scheme + place, "POST", 0.25);
        request.httpBody = Data(std::string(row.body, 'x'));
        const Answer answer = fetch(request);
        EXPECT_EQ(answer.outcome(),
                  "The request timed out after 0.25 s without a byte from or to 127.0.0.1.");
        ASSERT_EQ(answer.failure(), Kind::timedOut);
        EXPECT_EQ(answer.response.error->phase, row.phase);
        EXPECT_EQ(answer.response.error->maybeSent, row.maybeSent);
        EXPECT_EQ(answer.status(), row.status);
        EXPECT_EQ(answer.data(), "(absent)");
    }
    ::close(first);
    ::close(listener);
}

TEST(Session, WaitingForAConnectionIsNotIdleness) {
    Session session = sessionOfOneConnection();
    ScriptedServer server({[](Peer& peer) { peer.stall(); }, ScriptedServer::answering(okAnswer)});
    session.request(requestTo(server.url(), "GET", 0.2)).responseData(DispatchQueue::main(), [](auto&&) {});
    EXPECT_EQ(fetch(session, requestTo(server.url(), "GET", 0.05)).outcome(), "ok");
}

TEST(Session, ASlowAnswerHoldsUpNoOther) {
    std::promise<void> otherIsDone;
    ScriptedServer server({[&](Peer& peer) {
                               peer.receive();
                               otherIsDone.get_future().wait();
                               peer.send(okAnswer);
                           },
                           ScriptedServer::answering(okAnswer)});
    Session session = plainSession();
    std::optional<DataResponse> slow;
    const auto keep = [&](DataResponse response) { slow = std::move(response); };
    session.request(requestTo(server.url())).responseData(DispatchQueue::main(), keep);
    EXPECT_EQ(fetch(session, requestTo(server.url(), "GET", 10)).outcome(), "ok");
    EXPECT_FALSE(slow);
    otherIsDone.set_value();
    DispatchQueue::main().runUntil([&] { return slow.has_value(); }, std::chrono::seconds(60));
    EXPECT_TRUE(slow && !slow->error);
}

// The whole takes longer than the limit, no gap does.
TEST(Session, OutlivesASlowServerThatKeepsSending) {
    ScriptedServer server([](Peer& peer) {
        peer.receive();
        for (const char byte : okAnswer) {  // the head too, byte by byte
            peer.send({&byte, 1});
            peer.pause(10);
        }
    });
    EXPECT_EQ(fetch(requestTo(server.url(), "GET", 0.25)).data(), "hello");
}

TEST(Session, TakesAnOddTimeoutForTheUsualOne) {
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    for (const double timeout : {0.0, -1.0, std::nan(""), HUGE_VAL})
        EXPECT_EQ(fetch(requestTo(server.url(), "GET", timeout)).outcome(), "ok") << timeout;
}

TEST(Session, SessionsShareOneCookieJar) {
    ScriptedServer server(ScriptedServer::answering(response("200 OK", "hello", "Set-Cookie: login=42\r\n")));
    URLRequest request = requestTo(server.url());
    fetch(request), fetch(request);
    request.headers.set("Cookie", "own=1");
    fetch(request);
    const auto requests = server.requests();
    ASSERT_EQ(requests.size(), 3U);
    EXPECT_EQ(requests[0].field("Cookie"), "(none)");
    EXPECT_EQ(requests[1].field("Cookie"), "login=42");
    EXPECT_EQ(requests[2].field("Cookie"), "login=42; own=1");
}

TEST(Session, DroppingItCutsNothingInFlight) {
    std::atomic<int> completed{0}, successes{0};
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    DispatchQueue queue("tests.completions");
    const auto count = [&](const DataResponse& answer) {
        successes += answer.error ? 0 : 1;
        if (++completed == 200) DispatchQueue::main().stop();
    };
    for (int i = 0; i < 50; ++i) {
        Session session = plainSession();
        for (int request = 0; request < 4; ++request) {
            session.request(requestTo(server.url()))
                .responseData(i % 2 == 0 ? queue : DispatchQueue::main(), count);
        }
        session.request(requestTo(server.url()));  // never started, never sent
    }
    DispatchQueue::main().run();
    EXPECT_EQ(successes, 200);
    EXPECT_EQ(server.requests().size(), 200U);
}

TEST(Session, TakesRequestsFromManyThreadsAndFromCompletions) {
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    auto session = std::make_shared<Session>(URLSessionConfiguration{});
    std::atomic<int> left{8 * 50 * 2};
    const auto count = [&](DataResponse answer) {
        EXPECT_FALSE(answer.error);
        if (--left == 0) DispatchQueue::main().stop();
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([&] {
            for (int request = 0; request < 50; ++request) {
                session->request(requestTo(server.url()))
                    .responseData(DispatchQueue::main(), [&, session](DataResponse answer) {
                        count(std::move(answer));
                        session->request(requestTo(server.url())).responseData(DispatchQueue::main(), count);
                    });
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    DispatchQueue::main().run();
    EXPECT_EQ(left, 0);
    EXPECT_LE(server.connections(), 6U);
}

TEST(Session, ValidatesStatusThenContentType) {
    const Kind type = Kind::unacceptableContentType, status = Kind::unacceptableStatusCode;
    const struct {
        const char *name, *status, *body, *type, *accept;
        std::optional<Kind> failure;
    } rows[] = {
        {"no Accept, any type", "200 OK", "{}", "image/png", "", {}},
        {"parameters", "200 OK", "{}", "Text/HTML; charset=utf-8", "a/b, text/html;q=0.1", {}},
        {"wildcard subtype", "200 OK", "{}", "text/html", "text/*", {}},
        {"anything", "200 OK", "{}", "text/html", "application/json, */*;q=0.1", {}},
        {"other type", "200 OK", "{}", "text/html", "application/json", type},
        {"q=0 excludes", "200 OK", "{}", "text/html", "text/html;q=0, */*", type},
        {"no type is only anything", "200 OK", "{}", "", "text/*", type},
        {"no type, anything", "200 OK", "{}", "", "*/*", {}},
        {"malformed type", "200 OK", "{}", "json", "application/json", type},
        {"an empty body has no type", "204 No Content", "", "", "application/json", {}},
        {"empty 200", "200 OK", "", "", "application/json", Kind::emptyResponse},
        {"status first", "404 Not Found", "x", "text/html", "application/json", status},
        {"empty 500", "500 Oh", "", "", "", status},
        {"300", "300 Choices", "x", "", "", status},
        {"299", "299 Fine", "x", "", "", {}},
    };
    URLSessionConfiguration configuration;
    configuration.headers.set("Accept", "application/xml");  // the session's own does not count
    Session session(configuration);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string field = *row.type != '\0' ? "Content-Type: "s + row.type + "\r\n" : "";
        ScriptedServer server(ScriptedServer::answering(response(row.status, row.body, field)));
        URLRequest request = requestTo(server.url());
        if (*row.accept != '\0') request.headers.set("Accept", row.accept);
        const Answer answer = fetchValidated(session, request);
        EXPECT_EQ(answer.failure(), row.failure) << answer.outcome();
        EXPECT_TRUE(answer.response.response) << "the head is kept";
    }
}

TEST(Session, AsksForAnEvaluatorBeforeItConnects) {
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    Session session({}, "tests.trust",
                    std::make_shared<ServerTrustManager>(true, ServerTrustManager::Evaluators{}));
    const Answer refused = fetch(session, requestTo("https" + server.url().substr(4)));
    EXPECT_EQ(refused.failure(), Kind::serverTrustEvaluationFailed);
    EXPECT_EQ(refused.response.error->trust.value().reason, TrustFailure::Reason::noRequiredEvaluator);
    EXPECT_EQ(server.connections(), 0U);
    EXPECT_EQ(fetch(session, requestTo(server.url())).outcome(), "ok") << "plain http raises no question";
}

TEST(SessionDeathTest, TheProcessMayEndWithRequestsInFlight) {
    const auto endAtOnce = [] {
        ScriptedServer server([](Peer& peer) { peer.stall(); });
        const auto session = Session::defaultSession();
        for (int i = 0; i < 20; ++i)
            session->request(requestTo(server.url())).responseData(DispatchQueue::main(), {});
        std::exit(7);
    };
    EXPECT_EXIT(endAtOnce(), ::testing::ExitedWithCode(7), "");
}

}  // namespace
}  // namespace torvel
