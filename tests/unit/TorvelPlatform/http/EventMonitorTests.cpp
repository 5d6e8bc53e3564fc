#include "TorvelPlatform/http/EventMonitor.h"
#include "support/Fetching.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

using namespace testing;

struct Recording final : EventMonitor {
    void requestDidStart(const URLRequest&) override { ++started; }
    void requestDidEnd(const std::vector<HopMetrics>& ended, const DataResponse& answer) override {
        hops = ended;
        error = answer.error;
    }
    int started = 0;
    std::vector<HopMetrics> hops;
    std::optional<SessionError> error;
};

URLSessionConfiguration watchedBy(const std::shared_ptr<Recording>& monitor) {
    URLSessionConfiguration configuration;
    configuration.eventMonitors = {monitor};
    return configuration;
}

TEST(EventMonitor, HearsOfEveryHop) {
    ScriptedServer server([](Peer& peer) {
        peer.answer(response("307 Moved", "", "Location: /there?token=1\r\n"));
        for (int i = 0; i < 2; ++i) peer.answer(response("200 OK", "hello"));
    });
    const auto monitor = std::make_shared<Recording>();
    Session session(watchedBy(monitor));
    URLRequest request = requestTo(server.url("/here?pin=1"), "POST");
    request.httpBody = Data("four");
    request.headers.set("X", "y");
    ASSERT_EQ(fetch(session, request).outcome(), "ok");

    ASSERT_EQ(monitor->hops.size(), 2U);
    const HopMetrics &first = monitor->hops[0], &second = monitor->hops[1];
    EXPECT_EQ(first.location(), server.url("/here"));
    EXPECT_EQ(second.location(), server.url("/there"));
    EXPECT_EQ(first.response->statusCode, 307);
    EXPECT_EQ(second.response->statusCode, 200);
    EXPECT_FALSE(first.reusedConnection || second.connected);
    EXPECT_TRUE(first.nameLookedUp && second.reusedConnection);
    EXPECT_TRUE(*first.connected <= *first.sending && *first.sending <= *first.firstByte &&
                *first.firstByte <= first.end);
    for (const HopMetrics& hop : monitor->hops) {
        EXPECT_EQ(hop.method, "POST");
        EXPECT_EQ(hop.body, Data("four"));
        EXPECT_EQ(hop.fields.value("X"), "y");
        EXPECT_EQ(hop.bytesSent, 4U);
        EXPECT_EQ(hop.httpVersion, 11);
    }
    EXPECT_EQ(second.bytesReceived, 5U);
    EXPECT_EQ(monitor->started, 1);
}

TEST(EventMonitor, HearsOfWhatFailed) {
    ScriptedServer server(ScriptedServer::answering(response("500 Oops", "x")));
    const struct {
        std::string url;
        Kind kind;
        int status;
    } rows[] = {{server.url(), Kind::unacceptableStatusCode, 500},
                {"ftp://127.0.0.1/", Kind::invalidRequest, 0},
                {"https://untold.example/", Kind::serverTrustEvaluationFailed, 0},
                {"http://127.0.0.1:1/", Kind::cannotConnect, 0}};
    const auto monitor = std::make_shared<Recording>();
    Session session(watchedBy(monitor), "tests",
                    std::make_shared<ServerTrustManager>(true, ServerTrustManager::Evaluators{}));
    for (const auto& row : rows) {
        fetchValidated(session, requestTo(row.url));
        ASSERT_EQ(monitor->hops.size(), 1U) << row.url;
        EXPECT_EQ(monitor->error->kind, row.kind);
        EXPECT_EQ(monitor->hops[0].response ? monitor->hops[0].response->statusCode : 0, row.status);
        EXPECT_EQ(monitor->hops[0].url->absoluteString(), row.url);
    }
    EXPECT_EQ(monitor->started, 4);
}

}  // namespace
}  // namespace torvel
