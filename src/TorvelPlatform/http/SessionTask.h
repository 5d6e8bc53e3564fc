#pragma once  // internal

#include "TorvelPlatform/http/FormStream.h"
#include "TorvelPlatform/http/RequestRunner.h"
#include "TorvelPlatform/http/Session.h"
#include "TorvelPlatform/http/Transfer.h"

#include <atomic>
#include <cstdint>

namespace torvel {

// One request on its way through a session, over all its hops. Belongs to its caller until it is submitted,
// then to the session's thread, and last to the queue that its completion runs on.
struct SessionTask {
    SessionTask(std::shared_ptr<SessionCore> session, URLRequest urlRequest);

    bool hasBody() const { return form || stream || request.httpBody; }
    // Of the current hop.
    bool hasContent() const { return stream || (request.httpBody && !request.httpBody->empty()); }

    // Any thread, at any time.
    void cancel();
    bool isCancelled() const;
    // Cancels every request of the process that has not called back.
    static void cancelAll();

    // Tells the monitors, if there are any.
    void begin();
    // Completes the fields and encodes the form. What is wrong with the request is found before anything of
    // it is sent.
    std::optional<SessionError> prepare();
    // The same for the current hop.
    std::optional<SessionError> hopError() const;
    // Turns the request into its next hop; the error is that there must be none.
    std::optional<SessionError> turn(Redirection next);
    // Ends the task: the work calls its completion back.
    static DispatchQueue::Work end(std::shared_ptr<SessionTask> task, TransferResult result);

    // As the caller gave it.
    std::shared_ptr<SessionCore> core;  // keeps the session's thread
    URLRequest request;                 // of the current hop, once started
    std::optional<MultipartFormData> form;
    std::size_t memoryThreshold = 0;
    bool validates = false;
    std::shared_ptr<UploadProgress> progress;
    DispatchQueue* queue = nullptr;
    DataRequest::Completion completion;

    // Of whoever runs it.
    std::optional<std::string> accept;  // the caller's own field
    std::optional<FormStream> stream;   // a large form's body
    std::string origin;                 // of the current hop
    bool hasSlot = false;               // one of that origin's connections
    int redirects = 0;
    bool maybeSent = false;              // any byte of any hop
    std::unique_ptr<Transfer> transfer;  // refers to request and stream
    std::vector<HopMetrics> hops;        // when somebody watches; the last is under way

  private:
    void encodeForm();
    bool isWatched() const { return !hops.empty(); }
    void closeHop();
    void report(const DataResponse& outcome);
    DataResponse outcomeOf(TransferResult result) const;

    const std::shared_ptr<RequestRunner> m_runner;
    const std::uint64_t m_generation;  // how often all were cancelled before
    std::atomic<bool> m_cancelled{false};
};

SessionError cancelledError(const SessionTask& task);

}  // namespace torvel
