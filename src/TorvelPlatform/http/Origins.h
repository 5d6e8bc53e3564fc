#pragma once  // internal

#include "TorvelPlatform/foundation/URL.h"
#include "TorvelPlatform/http/ResponseHead.h"

#include <optional>
#include <string>
#include <unordered_map>

namespace torvel {

// What a session has learned about the servers it talks to (scheme, host and port). One thread.
class Origins {
  public:
    struct Origin {
        // Seconds after which an idle connection is not used again: the server may just be closing it, and a
        // request that meets that is lost.
        long maximumIdleAge = 15;
        bool keepsAlive = true;
        std::optional<bool> multiplexes = {};  // HTTP/2; absent before the first answer, once false for good
    };

    // What names the origin of a URL.
    static std::string keyOf(const URL& url);

    Origin of(const std::string& key) const;
    // `offeredHTTP2`: whether the answer could have come over it.
    void learn(const std::string& key, const ResponseHead& head, bool offeredHTTP2);
    // The server did not agree on HTTP/2.
    void learnHTTP1(const std::string& key) { m_origins[key].multiplexes = false; }

  private:
    std::unordered_map<std::string, Origin> m_origins;
};

}  // namespace torvel
