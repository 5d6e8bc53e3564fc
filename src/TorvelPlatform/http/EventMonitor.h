#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/http/HTTPURLResponse.h"
#include "TorvelPlatform/http/SessionError.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace torvel {

struct DataResponse;

// One hop of a request: what was sent, what came, and when. Moments are seconds since the hop's start,
// absent when it did not get so far or, up to `secured`, when a kept-alive connection spared it the step.
struct HopMetrics {
    // When the session turned to it.
    std::chrono::system_clock::time_point start = std::chrono::system_clock::now();
    double queued = 0;                   // It left the queue for one of the host's connections.
    std::optional<double> nameLookedUp;  // The host's addresses were known.
    std::optional<double> connected;     // The TCP connection stood.
    std::optional<double> secured;       // The TLS handshake was over.
    std::optional<double> sending;       // The first byte of the request was about to go.
    std::optional<double> firstByte;     // The first byte of the answer came.
    double end = 0;                      // The hop was over, however it ended.

    std::string method;               // As sent.
    std::optional<URL> url;           // Absent when the request had none.
    HTTPHeaders fields;               // The session's own and the caller's.
    std::optional<Data> body;         // As sent: sealed when an interceptor sealed it. Absent when it was
                                      // a large form, too.
    std::uint64_t bytesSent = 0;      // Of the body.
    std::uint64_t bytesReceived = 0;  // Of the body, as it came: before decompression.
    bool reusedConnection = false;    // The connection had served another request.
    bool cached = false;              // Answered from the cache.
    int httpVersion = 0;              // 10, 11, 20; 0 without an answer.
    std::optional<HTTPURLResponse> response;  // The head of the answer, of a redirect too.

    // Scheme, host, port and path. A query is left out: it often holds a secret.
    std::string location() const;
};

// Hears of a session's requests, to log or measure them. Called on the session's thread, which waits: take
// what is needed and return.
class EventMonitor {
  public:
    virtual ~EventMonitor() = default;

    // A request has begun; nothing of it was sent yet.
    virtual void requestDidStart(const URLRequest& request);

    // A request is over. `hops` has at least one, more after redirects. `response` is what its completion
    // receives, with the reason of a refused trust, unless the request is cancelled on its way there.
    virtual void requestDidEnd(const std::vector<HopMetrics>& hops, const DataResponse& response) = 0;
};

}  // namespace torvel
