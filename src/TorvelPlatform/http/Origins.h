#pragma once  // internal

#include "TorvelPlatform/foundation/URL.h"
#include "TorvelPlatform/http/ResponseHead.h"

#include <map>
#include <string>

namespace torvel {

// What a session has learned about the servers it talks to (scheme, host and port). One thread.
class Origins {
  public:
    struct Origin {
        // Seconds after which an idle connection is not used again: the server may just be closing it, and a
        // request that meets that is lost.
        long maximumIdleAge = 15;
        bool keepsAlive = true;
        bool multiplexes = false;  // HTTP/2
    };

    Origin of(const URL& url) const;
    void learn(const URL& url, const ResponseHead& head);

  private:
    std::map<std::string, Origin> m_origins;
};

}  // namespace torvel
