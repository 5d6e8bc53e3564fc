#pragma once

#include "TorvelPlatform/http/TransferResult.h"
#include "TorvelPlatform/http/URLRequest.h"

#include <functional>

namespace torvel {

// Stands in for the network, in tests: answers the hops of a session's requests in the place of servers.
// Redirects, validation, monitors and cancellation stay the session's own; nothing is cached.
class URLProtocol {
  public:
    virtual ~URLProtocol() = default;

    // Takes the hop's result, once, from any thread.
    using Done = std::function<void(TransferResult)>;

    // Answers one hop, now or later; until then the request waits. On the thread that starts the request, or
    // answers the hop before.
    virtual void load(const URLRequest& request, Done done) = 0;
};

}  // namespace torvel
