#pragma once  // internal

#include "TorvelPlatform/http/Session.h"

#include <memory>
#include <string>

namespace torvel {

class SessionWorker;

// What the handles and the requests of one session share. The thread ends with the last of them.
class SessionCore {
  public:
    SessionCore(URLSessionConfiguration sessionConfiguration, const std::string& rootQueueLabel,
                std::shared_ptr<const ServerTrustManager> serverTrustManager);
    ~SessionCore();
    SessionCore(const SessionCore&) = delete;
    SessionCore& operator=(const SessionCore&) = delete;

    const URLSessionConfiguration configuration;
    const std::shared_ptr<const ServerTrustManager> trustManager;

    SessionWorker& worker() { return *m_worker; }

  private:
    std::shared_ptr<SessionWorker> m_worker;
};

}  // namespace torvel
