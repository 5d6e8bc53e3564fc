#include "TorvelPlatform/http/Session.h"

#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/http/SessionCore.h"
#include "TorvelPlatform/http/SessionTask.h"
#include "TorvelPlatform/http/SessionWorker.h"

namespace torvel {

DataRequest::DataRequest(std::unique_ptr<SessionTask> task) : m_task(std::move(task)) {}
DataRequest::DataRequest(DataRequest&&) noexcept = default;
DataRequest::~DataRequest() = default;

SessionTask& DataRequest::task() {
    if (!m_task) fatalError("The request was started already.");
    return *m_task;
}

DataRequest& DataRequest::validate() {
    task().validates = true;
    return *this;
}

void DataRequest::responseData(DispatchQueue& queue, Completion completion) {
    task().queue = &queue;
    task().completion = std::move(completion);
    const std::shared_ptr<SessionCore> core = m_task->core;
    core->worker().submit(std::move(m_task));
}

UploadRequest& UploadRequest::uploadProgress(DispatchQueue& queue, std::function<void(double)> handler) {
    task().progress = std::make_shared<UploadProgress>(queue, std::move(handler));
    return *this;
}

SessionCore::SessionCore(URLSessionConfiguration sessionConfiguration, const std::string& rootQueueLabel,
                         std::shared_ptr<const ServerTrustManager> serverTrustManager)
    : configuration(std::move(sessionConfiguration)),
      trustManager(std::move(serverTrustManager)),
      m_worker(SessionWorker::start(rootQueueLabel, configuration.maximumConnectionsPerHost)) {}

SessionCore::~SessionCore() { m_worker->stop(); }

const std::shared_ptr<Session>& Session::defaultSession() {
    // Never destroyed: its thread is stopped when the process ends.
    static const auto& session =
        *new std::shared_ptr<Session>(std::make_shared<Session>(URLSessionConfiguration::defaults()));
    return session;
}

Session::Session(URLSessionConfiguration configuration, std::string rootQueueLabel,
                 std::shared_ptr<const ServerTrustManager> serverTrustManager)
    : m_core(std::make_shared<SessionCore>(std::move(configuration), rootQueueLabel,
                                           std::move(serverTrustManager))) {}

Session::~Session() = default;

DataRequest Session::request(URLRequest request) {
    return DataRequest(std::make_unique<SessionTask>(m_core, std::move(request)));
}

UploadRequest Session::upload(MultipartFormData formData, URLRequest request, std::size_t usingThreshold) {
    auto task = std::make_unique<SessionTask>(m_core, std::move(request));
    task->request.httpBody.reset();
    task->form = std::move(formData);
    task->memoryThreshold = usingThreshold;
    return UploadRequest(std::move(task));
}

const std::shared_ptr<const ServerTrustManager>& Session::serverTrustManager() const {
    return m_core->trustManager;
}

}  // namespace torvel
