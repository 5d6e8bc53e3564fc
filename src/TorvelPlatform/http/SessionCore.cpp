#include "TorvelPlatform/http/SessionCore.h"

#include "TorvelPlatform/http/SessionWorker.h"

#include <mutex>
#include <set>

namespace torvel {
namespace {

// The runners of the living sessions.
struct Registry {
    std::mutex mutex;
    std::set<RequestRunner*> runners;

    static Registry& shared() {
        static Registry& registry = *new Registry;  // never destroyed: sessions may end late
        return registry;
    }
};

}  // namespace

SessionCore::SessionCore(URLSessionConfiguration sessionConfiguration, const std::string& rootQueueLabel,
                         std::shared_ptr<const ServerTrustManager> serverTrustManager)
    : configuration(std::move(sessionConfiguration)),
      trustManager(std::move(serverTrustManager)),
      runner(SessionWorker::start(rootQueueLabel, configuration.maximumConnectionsPerHost)) {
    const std::lock_guard lock(Registry::shared().mutex);
    Registry::shared().runners.insert(runner.get());
}

SessionCore::~SessionCore() {
    {
        const std::lock_guard lock(Registry::shared().mutex);
        Registry::shared().runners.erase(runner.get());
    }
    runner->stop();
}

void SessionCore::sweepAll() {
    const std::lock_guard lock(Registry::shared().mutex);
    for (RequestRunner* const runner : Registry::shared().runners) runner->sweep();
}

}  // namespace torvel
