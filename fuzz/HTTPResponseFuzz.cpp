#include "Fuzz.h"
#include "TorvelPlatform/http/URLCache.h"
#include "support/Fetching.h"

#include <memory>

using namespace torvel;

// Whatever a server answers, a request completes once.
void fuzz(std::string_view bytes) {
    static std::string answer;
    static std::unique_ptr<testing::ScriptedServer> server;
    static Session session = testing::plainSession();
    static int inputs = 0;
    if (inputs++ % 1000 == 0)  // it keeps a thread for every connection that it ever had
        server = std::make_unique<testing::ScriptedServer>([](testing::Peer& peer) { peer.answer(answer); });
    answer = bytes;
    URLCache::shared().removeAllCachedResponses();  // one that may be kept would answer for all that follow
    const testing::Answer ended = testing::fetch(session, testing::requestTo(server->url(), "GET", 5));
    mustHold(ended.completions == 1 && (ended.response.error || ended.response.data));
}
