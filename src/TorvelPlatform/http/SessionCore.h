#pragma once  // internal

#include "TorvelPlatform/http/RequestRunner.h"
#include "TorvelPlatform/http/Session.h"

#include <memory>
#include <string>

namespace torvel {

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
    const std::shared_ptr<RequestRunner> runner;

    // Every session of the process looks through its requests.
    static void sweepAll();
};

}  // namespace torvel
