#pragma once  // internal

#include "TorvelPlatform/http/SessionWorker.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace torvel {

// The threads of all sessions. At the end of the process they are stopped as they stand, before the libraries
// under them take themselves apart: requests in flight are then simply dropped.
class LiveWorkers {
  public:
    static LiveWorkers& shared();

    void start(std::shared_ptr<SessionWorker> worker, const std::string& label);
    // Waits for the worker's thread, unless it is the calling one: that is waited for later.
    void join(const SessionWorker& worker);

  private:
    struct Entry {
        std::shared_ptr<SessionWorker> worker;
        std::thread thread;
    };
    using Entries = std::map<const SessionWorker*, Entry>;

    LiveWorkers();
    void joinEnded();
    void stopAtExit();

    std::mutex m_mutex;
    Entries m_running;
    bool m_exiting = false;
    Entries m_dropped;  // keeps what was in flight at the end reachable, for leak checkers
};

}  // namespace torvel
