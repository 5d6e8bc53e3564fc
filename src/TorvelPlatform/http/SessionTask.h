#pragma once  // internal

#include "TorvelPlatform/http/Session.h"
#include "TorvelPlatform/http/SpoolFile.h"
#include "TorvelPlatform/http/Transfer.h"

#include <chrono>

namespace torvel {

// One request on its way through a session, over all its hops. Belongs to its caller until it is submitted,
// then to the session's thread.
struct SessionTask {
    SessionTask(std::shared_ptr<SessionCore> session, URLRequest urlRequest)
        : core(std::move(session)), request(std::move(urlRequest)) {}

    bool hasBody() const { return form || spool || request.httpBody; }

    // As the caller gave it.
    std::shared_ptr<SessionCore> core;  // keeps the session's thread
    URLRequest request;                 // of the current hop, once started
    std::optional<MultipartFormData> form;
    std::size_t memoryThreshold = 0;
    bool validates = false;
    std::shared_ptr<UploadProgress> progress;
    DispatchQueue* queue = nullptr;
    DataRequest::Completion completion;

    // Of the session's thread.
    std::optional<std::string> accept;  // the caller's own field
    std::optional<SpoolFile> spool;
    int redirects = 0;
    std::unique_ptr<Transfer> transfer;  // refers to request and spool
    std::chrono::steady_clock::time_point deadline;
};

}  // namespace torvel
