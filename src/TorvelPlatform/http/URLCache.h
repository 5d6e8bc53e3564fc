#pragma once

#include "TorvelPlatform/http/HTTPURLResponse.h"
#include "TorvelPlatform/http/URLRequest.h"

#include <memory>
#include <optional>

namespace torvel {

// Responses kept in memory as protocol caching allows (RFC 9111): GET, status 200, explicit freshness, no
// "no-store" or "private" exception, Vary honoured. Bounded in bytes; the oldest go first. Never on disk.
// Any thread.
class URLCache {
  public:
    // A kept answer: its head and its body.
    struct CachedResponse {
        HTTPURLResponse response;  // the head
        Data data;                 // the body
    };

    // An empty cache that keeps at most so many bytes.
    explicit URLCache(std::size_t memoryCapacity);
    ~URLCache();

    // The process's cache, which sessions use. 4 MiB.
    static URLCache& shared();

    // A fresh response for the request; absent when there is none.
    std::optional<CachedResponse> cachedResponse(const URLRequest& forRequest);
    // Keeps the response if protocol caching allows it.
    void store(const URLRequest& request, const CachedResponse& response);
    // Forgets every response.
    void removeAllCachedResponses();

  private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace torvel
