#include "Fuzz.h"
#include "TorvelPlatform/http/URLCache.h"
#include "support/Fetching.h"

using namespace torvel;

// Whatever a server answers, a request completes once.
void fuzz(std::string_view bytes) {
    static std::string answer;
    static testing::ScriptedServer server([](testing::Peer& peer) { peer.answer(answer); });
    static Session session = testing::plainSession();
    answer = bytes;
    URLCache::shared().removeAllCachedResponses();  // one that may be kept would answer for all that follow
    const testing::Answer ended = testing::fetch(session, testing::requestTo(server.url(), "GET", 5));
    mustHold(ended.completions == 1 && (ended.response.error || ended.response.data));
}
