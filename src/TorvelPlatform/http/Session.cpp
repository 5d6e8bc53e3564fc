#include "TorvelPlatform/http/Session.h"

#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/http/SessionCore.h"
#include "TorvelPlatform/http/SessionTask.h"

namespace torvel {

DataRequest::DataRequest(std::shared_ptr<SessionTask> task) : m_task(std::move(task)) {}
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

RequestHandle DataRequest::responseData(DispatchQueue& queue, Completion completion) {
    task().queue = &queue;
    task().completion = std::move(completion);
    RequestHandle handle{m_task};
    const std::shared_ptr<SessionCore> core = m_task->core;  // the request may end before submit() does
    core->runner->submit(std::move(m_task));
    return handle;
}

UploadRequest& UploadRequest::uploadProgress(DispatchQueue& queue, std::function<void(double)> handler) {
    if (handler) task().progress = std::make_shared<UploadProgress>(queue, std::move(handler));
    return *this;
}

void RequestHandle::cancel() const {
    if (const auto task = m_task.lock()) task->cancel();
}

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

void Session::cancelAllRequests() { SessionTask::cancelAll(); }

DataRequest Session::request(URLRequest request) {
    return DataRequest(std::make_shared<SessionTask>(m_core, std::move(request)));
}

UploadRequest Session::upload(MultipartFormData formData, URLRequest request, std::size_t usingThreshold) {
    auto task = std::make_shared<SessionTask>(m_core, std::move(request));
    task->request.httpBody.reset();
    task->form = std::move(formData);
    task->memoryThreshold = usingThreshold;
    return UploadRequest(std::move(task));
}

const std::shared_ptr<const ServerTrustManager>& Session::serverTrustManager() const {
    return m_core->trustManager;
}

}  // namespace torvel
