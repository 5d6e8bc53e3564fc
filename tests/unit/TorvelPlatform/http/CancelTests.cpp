#include "TorvelTesting/SessionDouble.h"
#include "support/Fetching.h"

#include <atomic>
#include <future>
#include <thread>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using namespace testing;

struct Observed : Answer {
    RequestHandle handle;
};

// Starts a request to an answering or a silent server and keeps what it completes with.
std::shared_ptr<Observed> start(Session& session, const std::string& url, std::function<void()> then = {}) {
    auto seen = std::make_shared<Observed>();
    seen->handle = session.request(requestTo(url))
                       .responseData(DispatchQueue::main(), [seen, then](DataResponse response) {
                           ++seen->completions;
                           seen->response = std::move(response);
                           seen->handle.cancel();
                           if (then) then();
                       });
    return seen;
}

TEST(Cancel, EndsInOneErrorUnlessTheCompletionHasBegun) {
    std::promise<void> arrived;
    ScriptedServer silent([&](Peer& peer) {
        peer.receive();
        arrived.set_value();
        peer.stall();
    });
    ScriptedServer halting([](Peer& peer) {
        if (peer.receive()) peer.send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf");
        peer.stall();
    });
    ScriptedServer answering(ScriptedServer::answering(okAnswer));
    Session session = plainSession();
    DispatchQueue& main = DispatchQueue::main();

    const struct {
        const char* name;
        const std::string url;
        std::function<void(Observed&)> before;  // what has happened when it is cancelled
        bool cancels = true;
    } rows[] = {
        {"before or while the thread picks it up", halting.url(), [](Observed&) {}},
        {"waiting for the answer", silent.url(), [&](Observed&) { arrived.get_future().wait(); }},
        {"within the answer", halting.url(), [&](Observed&) { fetch(session, requestTo(answering.url())); }},
        {"after its end was posted", "ftp://127.0.0.1/",
         [&](Observed&) {  // refusals are posted in the order of the requests
             DispatchQueue other("tests.other");
             std::promise<void> posted;
             session.request(requestTo("ftp://127.0.0.1/")).responseData(other, [&](const DataResponse&) {
                 posted.set_value();
             });
             posted.get_future().wait();
         }},
        {"after the end", answering.url(),
         [&](Observed& seen) {
             main.runUntil([&] { return seen.completions > 0; }, std::chrono::seconds(60));
         },
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto seen = start(session, row.url);
        row.before(*seen);
        const int before = seen->completions;
        seen->handle.cancel();
        EXPECT_EQ(seen->completions, before) << "called back before cancel() returned";
        seen->handle.cancel();
        main.runUntil([&] { return seen->completions > 0; }, std::chrono::seconds(60));
        EXPECT_EQ(fetch(session, requestTo(answering.url())).outcome(), "ok");
        EXPECT_EQ(seen->completions, 1);
        EXPECT_EQ(seen->response.error.has_value(), row.cancels);
        if (!row.cancels) continue;
        EXPECT_EQ(seen->response.error->kind, Kind::cancelled);
        EXPECT_FALSE(seen->response.response || seen->response.data);
    }
    RequestHandle().cancel();
}

struct Silence final : URLProtocol {
    void load(const URLRequest&, Done) override {}
};

TEST(Cancel, OfAllReachesEverySessionAndNoLaterRequest) {
    ScriptedServer silent(neverAnswer);
    ScriptedServer answering(ScriptedServer::answering(okAnswer));
    auto dropped = std::make_unique<Session>(URLSessionConfiguration{});
    Session kept = plainSession();
    const auto first = start(*dropped, silent.url()), second = start(kept, silent.url());
    dropped.reset();
    std::shared_ptr<Observed> later;
    const auto third = start(kept, silent.url(), [&] { later = start(kept, answering.url()); });
    URLSessionConfiguration configuration;
    configuration.protocol = std::make_shared<Silence>();
    const auto fourth = start(*std::make_unique<Session>(configuration), silent.url());  // ends in the call
    Session::cancelAllRequests();
    const auto haveEnded = [&] {
        return first->completions + second->completions + third->completions == 3 && later->completions > 0;
    };
    DispatchQueue::main().runUntil(haveEnded, std::chrono::seconds(60));
    for (const auto& seen : {first, second, third, fourth})
        EXPECT_EQ(seen->response.error->kind, Kind::cancelled);
    EXPECT_FALSE(later->response.error);
}

// Half of the requests reach a server that answers, half a double that never does.
TEST(Cancel, FromManyThreadsWhileRequestsEnd) {
    ScriptedServer server(ScriptedServer::answering(okAnswer));
    SessionDouble silent;
    silent.on("GET", "/").hang();
    std::atomic<int> completions{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, i] {
            for (int round = 0; round < 50; ++round) {
                const auto session =
                    i % 2 == 0 ? std::make_shared<Session>(URLSessionConfiguration{}) : silent.session();
                const RequestHandle handle =
                    session->request(requestTo(server.url()))
                        .responseData(DispatchQueue::main(), [&](const DataResponse&) {
                            if (++completions == 200) DispatchQueue::main().stop();
                        });
                if (round % 2 == 0) std::thread([handle] { handle.cancel(); }).join();
                if (i == 0 && round % 10 == 0) Session::cancelAllRequests();
                handle.cancel();
            }
        });
    }
    DispatchQueue::main().run();
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(completions, 200);
}

}  // namespace
}  // namespace torvel
