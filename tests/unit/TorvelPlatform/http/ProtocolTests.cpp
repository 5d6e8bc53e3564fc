#include "TorvelTesting/SessionDouble.h"
#include "support/Fetching.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

using namespace testing;

// A double is worth its fidelity: whatever a rule says, the request ends as it does with the server beside
// it.
TEST(Protocol, ARequestEndsAsItDoesOverTheNetwork) {
    const auto answering = [](std::string bytes) { return ScriptedServer::answering(std::move(bytes)); };
    const std::string json = "Content-Type: application/json\r\n";
    const struct {
        const char* name;
        std::function<void(SessionDouble::Rule)> rule;
        ScriptedServer::Script script;
        const char* method = "GET";
    } rows[] = {
        {"success", [](auto rule) { rule.answer(200, "{}"); }, answering(response("200 OK", "{}", json))},
        {"status", [](auto rule) { rule.answer(500, "x"); }, answering(response("500 X", "x", json))},
        {"content type", [](auto rule) { rule.answer(200, "x", "text/html"); },
         answering(response("200 OK", "x", "Content-Type: text/html\r\n"))},
        {"no bytes", [](auto rule) { rule.answer(200); }, answering(response("200 OK", "", json))},
        {"204", [](auto rule) { rule.answer(204); }, answering("HTTP/1.1 204 No\r\n" + json + "\r\n")},
        {"a loop", [](auto rule) { rule.redirect("/"); },
         answering(response("307 X", "", "Location: /\r\n"))},
        {"a redirect to a file", [](auto rule) { rule.redirect("file:///"); },
         answering(response("302 X", "", "Location: file:///\r\n"))},
        {"a redirected body", [](auto rule) { rule.redirect("http://b.example/"); },
         answering(response("307 X", "", "Location: http://b.example/\r\n")), "POST"},
        {"cut short", [](auto rule) { rule.breakOff(200); },
         [](Peer& peer) { peer.answer("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nhalf"); }},
        {"no answer", [](auto rule) { rule.timeOut(); }, neverAnswer},
        {"refused", [](auto rule) { rule.fail(Kind::connectionLost); }, [](Peer& peer) { peer.answer(""); }},
        {"GET with a body", [](auto rule) { rule.answer(200, "{}"); }, answering(okAnswer), "GET+"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        ScriptedServer server(row.script);
        SessionDouble backend;
        const std::string method = std::string(row.method).substr(0, std::string(row.method).find('+'));
        row.rule(backend.on(method, "/"));
        Session plain = plainSession();
        const auto ended = [&](Session& session) {
            URLRequest request = requestTo(server.url(), method, 0.1);
            request.headers.set("Accept", "application/json");
            if (row.method != std::string("GET")) request.httpBody = Data("four");
            return fetchValidated(session, request);
        };
        const Answer real = ended(plain), doubled = ended(*backend.session());
        EXPECT_EQ(doubled.failure(), real.failure());
        EXPECT_EQ(doubled.status(), real.status());
        EXPECT_EQ(doubled.data(), real.data());
        EXPECT_EQ(backend.requests().size(), server.requests().size());
        if (!real.response.error) continue;
        EXPECT_EQ(doubled.response.error->maybeSent, real.response.error->maybeSent);
        EXPECT_EQ(doubled.response.error->phase, real.response.error->phase);
    }
}

}  // namespace
}  // namespace torvel
