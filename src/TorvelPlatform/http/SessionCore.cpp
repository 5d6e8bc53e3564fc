#include "TorvelPlatform/http/SessionCore.h"

#include "TorvelPlatform/http/ProtocolRunner.h"
#include "TorvelPlatform/http/SessionWorker.h"

#include <algorithm>
#include <mutex>
#include <set>

namespace torvel {
namespace {

// The runners of the living sessions.
struct Registry {
    std::mutex mutex;
    std::set<std::shared_ptr<RequestRunner>> runners;

    static Registry& shared() {
        static Registry& registry = *new Registry;  // never destroyed: sessions may end late
        return registry;
    }
};

std::shared_ptr<RequestRunner> makeRunner(const URLSessionConfiguration& configuration,
                                          const std::string& label) {
    if (configuration.protocol) return std::make_shared<ProtocolRunner>(configuration.protocol);
    return SessionWorker::start(label, std::max<std::size_t>(configuration.maximumConnectionsPerHost, 1));
}

}  // namespace

SessionCore::SessionCore(URLSessionConfiguration sessionConfiguration, const std::string& rootQueueLabel,
                         std::shared_ptr<const ServerTrustManager> serverTrustManager)
    : configuration(std::move(sessionConfiguration)),
      trustManager(std::move(serverTrustManager)),
      runner(makeRunner(configuration, rootQueueLabel)) {
    const std::lock_guard lock(Registry::shared().mutex);
    Registry::shared().runners.insert(runner);
}

SessionCore::~SessionCore() {
    {
        const std::lock_guard lock(Registry::shared().mutex);
        Registry::shared().runners.erase(runner);
    }
    runner->stop();
}

void SessionCore::sweepAll() {
    std::set<std::shared_ptr<RequestRunner>> runners;  // swept outside the lock: that may end a session
    {
        const std::lock_guard lock(Registry::shared().mutex);
        runners = Registry::shared().runners;
    }
    for (const auto& runner : runners) runner->sweep();
}

}  // namespace torvel
