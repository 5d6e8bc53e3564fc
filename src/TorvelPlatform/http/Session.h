#pragma once

#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/http/EventMonitor.h"
#include "TorvelPlatform/http/HTTPURLResponse.h"
#include "TorvelPlatform/http/MultipartFormData.h"
#include "TorvelPlatform/http/RequestHandle.h"
#include "TorvelPlatform/http/ServerTrustManager.h"
#include "TorvelPlatform/http/SessionError.h"
#include "TorvelPlatform/http/URLProtocol.h"
#include "TorvelPlatform/http/URLRequest.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace torvel {

// How a request ended. Success is the absence of an error; `data` then is present (and empty for 204, 205
// and HEAD). A failure keeps the response head that had arrived, and the bytes of an answer that arrived
// whole and was refused for its status or content type.
struct DataResponse {
    std::optional<HTTPURLResponse> response;  // absent when no head arrived
    std::optional<Data> data;                 // the body
    std::optional<SessionError> error;        // absent for success
};

// What a session adds to every request, and its bounds.
struct URLSessionConfiguration {
    // The default header fields: Accept-Encoding, Accept-Language (the preferred languages) and User-Agent
    // (the host program, its version and the library's).
    static URLSessionConfiguration defaults();

    // Added to every request where it has no field of the name itself.
    HTTPHeaders headers;
    // Connections open at a time to one host, at least one; further requests wait. Where HTTP/2 is spoken
    // those that carry bodies are counted apart.
    std::size_t maximumConnectionsPerHost = 6;
    // Bound on a response body, as received and as decompressed; a larger one fails.
    std::size_t maximumResponseBytes = std::size_t{256} * 1024 * 1024;
    // Hear of every request. None costs nothing.
    std::vector<std::shared_ptr<EventMonitor>> eventMonitors = {};
    // Answers in the place of the network, for tests. nullptr: the network.
    std::shared_ptr<URLProtocol> protocol = nullptr;
};

class Session;
class SessionCore;

// One request of a session. Collects its options until responseData() starts it; a handle that is dropped
// before never sends anything.
class DataRequest {
  public:
    // What hears of a request's end.
    using Completion = std::function<void(DataResponse)>;

    // Demands status 200 to 299, then a content type that the request's Accept header allows (any, when it
    // names none).
    DataRequest& validate();

    // Starts the request, which can be done once. `completion` is called exactly once, on `queue`, whatever
    // happens; only the end of the process may leave it uncalled. The queue outlives the request. A response
    // without bytes is a failure unless its status is 204 or 205 or the method HEAD.
    RequestHandle responseData(DispatchQueue& queue, Completion completion);

    // The handle alone moves.
    DataRequest(DataRequest&&) noexcept;
    ~DataRequest();

  protected:
    friend class Session;
    // For the session, which makes requests.
    explicit DataRequest(std::shared_ptr<SessionTask> task);
    // The request to be; until it is started.
    SessionTask& task();

  private:
    std::shared_ptr<SessionTask> m_task;  // until the request is started
};

// An upload of a multipart form.
class UploadRequest : public DataRequest {
  public:
    // `handler` receives the fraction sent, from above 0 to 1.0, never falling, on `queue`. 1.0 comes once,
    // when all was sent, and before the completion if that is called on the same queue.
    UploadRequest& uploadProgress(DispatchQueue& queue, std::function<void(double)> handler);

  private:
    friend class Session;
    using DataRequest::DataRequest;
};

// An HTTP client: one background thread (its serial root queue), one pool of connections, one immutable
// table of trust. Requests keep their session alive, so dropping the last handle cuts nothing in flight.
// Every operation may be called from any thread.
//
// A proxy that the environment names is used (http_proxy, https_proxy, all_proxy; no_proxy for exceptions).
// Whether it names any is looked for once, when the session is made.
class Session {
  public:
    // The largest form in bytes that is encoded in memory.
    static constexpr std::size_t defaultEncodingMemoryThreshold = 10'000'000;

    // The shared session without a trust manager: default trust evaluation.
    static const std::shared_ptr<Session>& defaultSession();

    // A session with a thread of that name; nullptr leaves trust to the default evaluation.
    explicit Session(URLSessionConfiguration configuration,
                     std::string rootQueueLabel = "org.alamofire.session.rootQueue",
                     std::shared_ptr<const ServerTrustManager> serverTrustManager = nullptr);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    // Cancels every request of the process, of whichever session, whose completion has not begun.
    static void cancelAllRequests();

    // A request that nothing has started yet.
    DataRequest request(URLRequest request);
    // From `usingThreshold` bytes on, the encoded body is never in memory as a whole, but read from the
    // form's parts. The form's content type replaces the request's.
    UploadRequest upload(MultipartFormData formData, URLRequest request,
                         std::size_t usingThreshold = defaultEncodingMemoryThreshold);

    // nullptr when there is none.
    const std::shared_ptr<const ServerTrustManager>& serverTrustManager() const;

  private:
    std::shared_ptr<SessionCore> m_core;
};

}  // namespace torvel
