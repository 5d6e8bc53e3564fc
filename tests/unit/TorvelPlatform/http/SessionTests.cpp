#include "TorvelPlatform/http/Session.h"
#include "support/Fetching.h"
#include "support/ScriptedServer.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

using testing::Answer;
using testing::fetch;
using testing::requestTo;
using testing::response;
using testing::ScriptedServer;

TEST(Session, Smoke) {
    ScriptedServer server(ScriptedServer::answering(response("200 OK", "hello")));
    Session session(URLSessionConfiguration::defaults());
    for (int i = 0; i < 3; ++i) {
        Answer answer = fetch(session, requestTo(server.url()));
        EXPECT_EQ(answer.outcome(), "ok");
        EXPECT_EQ(answer.data(), "hello");
    }
    EXPECT_EQ(server.connections(), 1U);
    fprintf(stderr, "%s", server.requests()[0].head.c_str());
}

}  // namespace
}  // namespace torvel
