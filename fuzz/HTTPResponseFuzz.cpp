#include "Fuzz.h"
#include "TorvelPlatform/http/Session.h"
#include "TorvelTesting/ScriptedServer.h"

#include <chrono>

using namespace torvel;

// Whatever a server answers, a request completes once.
void fuzz(std::string_view bytes) {
    static std::string answer;
    static testing::ScriptedServer server([](testing::ScriptedServer::Peer& peer) { peer.answer(answer); });
    static Session session{URLSessionConfiguration{}};
    answer = bytes;
    URLRequest request(*URL::parse(server.url()));
    request.timeoutInterval = 5;
    int completions = 0;
    session.request(request).responseData(DispatchQueue::main(), [&](const DataResponse& response) {
        ++completions;
        mustHold(response.error || response.data);
    });
    DispatchQueue::main().runUntil([&] { return completions > 0; }, std::chrono::seconds(20));
    DispatchQueue::main().drain();
    mustHold(completions == 1);
}
