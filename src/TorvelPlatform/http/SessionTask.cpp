#include "TorvelPlatform/http/SessionTask.h"

#include "TorvelPlatform/http/HeaderText.h"
#include "TorvelPlatform/http/RequestCheck.h"
#include "TorvelPlatform/http/SessionCore.h"
#include "TorvelPlatform/http/Validation.h"

#include <numeric>
#include <utility>

namespace torvel {
namespace {

using Kind = SessionError::Kind;

// How often every request of the process was cancelled. A request that began before the latest time is.
std::atomic<std::uint64_t> generation{0};

}  // namespace

SessionTask::SessionTask(std::shared_ptr<SessionCore> session, URLRequest urlRequest)
    : core(std::move(session)),
      request(std::move(urlRequest)),
      m_runner(core->runner),
      m_generation(generation.load()) {}

void SessionTask::cancel() {
    if (!m_cancelled.exchange(true)) m_runner->sweep();
}

bool SessionTask::isCancelled() const { return m_cancelled.load() || m_generation != generation.load(); }

void SessionTask::cancelAll() {
    ++generation;
    SessionCore::sweepAll();
}

void SessionTask::begin() {
    const auto& monitors = core->configuration.eventMonitors;
    if (monitors.empty()) return;
    hops.emplace_back();
    for (const auto& monitor : monitors) monitor->requestDidStart(request);
}

// Takes over the hop's request, which is not needed any more.
void SessionTask::closeHop() {
    HopMetrics& hop = hops.back();
    hop.end = std::chrono::duration<double>(std::chrono::system_clock::now() - hop.start).count();
    hop.method = request.httpMethod;
    hop.url = request.url;
    hop.fields = request.headers;
    hop.body = std::exchange(request.httpBody, std::nullopt);
}

void SessionTask::report(const DataResponse& outcome) {
    closeHop();
    for (const auto& monitor : core->configuration.eventMonitors) monitor->requestDidEnd(hops, outcome);
}

std::optional<SessionError> SessionTask::prepare() {
    accept = request.headers.value("Accept");
    for (const auto& [name, value] : core->configuration.headers.fields())
        if (!request.headers.contains(name)) request.headers.set(name, value);
    if (auto error = requestError(request, hasBody())) return error;
    if (form) encodeForm();
    return std::nullopt;
}

// Turns the form into the request's body, or a large one into a stream.
void SessionTask::encodeForm() {
    MultipartFormData encoded = std::move(*form);
    form.reset();
    request.headers.set("Content-Type", encoded.contentType());
    const std::size_t content = std::accumulate(
        encoded.parts().begin(), encoded.parts().end(), std::size_t{0},
        [](std::size_t sum, const MultipartFormData::Part& part) { return sum + part.content.size(); });
    if (content >= memoryThreshold) {
        stream.emplace(std::move(encoded));
        return;
    }
    std::string body;
    body.reserve(encoded.contentLength());
    for (std::size_t part = 0; part < encoded.parts().size(); ++part)
        body.append(encoded.head(part)).append(encoded.parts()[part].content.raw());
    request.httpBody = Data(std::move(body.append(encoded.tail())));
}

std::optional<SessionError> SessionTask::hopError() const {
    if (isCancelled()) return cancelledError(*this);
    // A host that must be evaluated and cannot be is refused before anything is sent, even a name look-up.
    const ServerTrustManager* const manager = core->trustManager.get();
    const std::string host = request.url->host().value_or("");
    if (manager == nullptr || !manager->allHostsMustBeEvaluated() || manager->evaluator(host) != nullptr ||
        !equalsIgnoringCase(request.url->scheme().value_or(""), "https"))
        return std::nullopt;
    TrustFailure failure{TrustFailure::Reason::noRequiredEvaluator, host,
                         "The server " + host + " is not trusted: no evaluator is given for it."};
    std::string description = failure.description;
    return SessionError{Kind::serverTrustEvaluationFailed, std::move(description), std::move(failure)};
}

std::optional<SessionError> SessionTask::turn(Redirection next) {
    constexpr int mostRedirects = 16;
    const std::string from = request.url->host().value_or("");
    if (++redirects > mostRedirects)
        return SessionError{Kind::redirectFailed, from + " redirected too many times.", std::nullopt};
    transfer.reset();
    if (isWatched()) {
        closeHop();
        hops.emplace_back();
    }
    request = std::move(next.request);
    if (!next.keepsBody) stream.reset();
    auto error = requestError(request, hasBody());
    if (error) error->kind = Kind::redirectFailed;
    return error;
}

DataResponse SessionTask::outcomeOf(TransferResult result) const {
    // Half an answer is withheld: it could pass for an error payload of the server's, which hosts read as
    // success.
    const bool whole = !result.error;
    DataResponse response{std::move(result.response), std::nullopt, std::move(result.error)};
    const bool empty = result.body.empty();
    if (!response.error && validates) response.error = validationError(accept, *response.response, empty);
    if (!response.error) response.error = emptinessError(request.httpMethod, *response.response, empty);
    if (response.error) response.error->maybeSent = maybeSent;
    if (whole && (!response.error || !empty)) response.data = Data(std::move(result.body));
    return response;
}

DispatchQueue::Work SessionTask::end(std::shared_ptr<SessionTask> task, TransferResult result) {
    DataResponse outcome = task->outcomeOf(std::move(result));
    task->transfer.reset();
    if (task->isWatched()) task->report(outcome);
    task->stream.reset();
    task->request.httpBody.reset();
    task->progress.reset();
    task->core.reset();
    return [task = std::move(task), outcome = std::move(outcome)]() mutable {
        // Moved out: a handle that is just cancelling must not be the one to destroy them.
        const DataRequest::Completion completion = std::move(task->completion);
        if (task->isCancelled()) outcome = {std::nullopt, std::nullopt, cancelledError(*task)};
        if (completion) completion(std::move(outcome));
    };
}

SessionError cancelledError(const SessionTask& task) {
    const std::string host = task.request.url ? task.request.url->host().value_or("") : "";
    return {Kind::cancelled, "The request to " + host + " was cancelled.", std::nullopt, std::nullopt,
            task.maybeSent};
}

}  // namespace torvel
