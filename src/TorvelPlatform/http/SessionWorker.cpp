#include "TorvelPlatform/http/SessionWorker.h"

#include "TorvelPlatform/dispatch/LibraryThread.h"
#include "TorvelPlatform/http/HeaderText.h"
#include "TorvelPlatform/http/LiveWorkers.h"
#include "TorvelPlatform/http/RequestCheck.h"
#include "TorvelPlatform/http/SessionCore.h"
#include "TorvelPlatform/http/URLCache.h"
#include "TorvelPlatform/http/Validation.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <numeric>
#include <system_error>

namespace torvel {
namespace {

using Clock = TransferLoop::Clock;
using Kind = SessionError::Kind;

// In seconds.
double idleLimit(const URLRequest& request) {
    constexpr double usual = 60.0;
    constexpr double shortest = 0.001, longest = 10.0 * 365 * 24 * 3600;
    return request.timeoutInterval > 0.0 ? std::clamp(request.timeoutInterval, shortest, longest) : usual;
}

SessionError timeoutError(const URLRequest& request) {
    std::array<char, 32> seconds;
    std::snprintf(seconds.data(), seconds.size(), "%g", idleLimit(request));
    return {Kind::timedOut,
            std::string("The request timed out after ") + seconds.data() + " s without a byte from or to " +
                request.url->host().value_or("") + ".",
            std::nullopt};
}

// A host that must be evaluated and cannot be is refused before anything is sent, even a name look-up.
std::optional<SessionError> missingEvaluatorError(const ServerTrustManager* manager, const URL& url) {
    const std::string host = url.host().value_or("");
    if (manager == nullptr || !manager->allHostsMustBeEvaluated() || manager->evaluator(host) != nullptr ||
        !equalsIgnoringCase(url.scheme().value_or(""), "https"))
        return std::nullopt;
    TrustFailure failure{TrustFailure::Reason::noRequiredEvaluator, host,
                         "The server " + host + " is not trusted: no evaluator is given for it."};
    std::string description = failure.description;
    return SessionError{Kind::serverTrustEvaluationFailed, std::move(description), std::move(failure)};
}

// Turns the form into the request's body, in memory or in a file.
std::optional<SessionError> encodeForm(SessionTask& task) {
    const MultipartFormData form = std::move(*task.form);
    task.form.reset();
    task.request.headers.set("Content-Type", form.contentType());
    const std::size_t content = std::accumulate(
        form.parts().begin(), form.parts().end(), std::size_t{0},
        [](std::size_t sum, const MultipartFormData::Part& part) { return sum + part.content.size(); });
    if (content >= task.memoryThreshold) {
        task.spool = SpoolFile::write(form);
        if (task.spool) return std::nullopt;
        return SessionError{Kind::invalidRequest,
                            "The upload cannot be spooled to a temporary file: " +
                                std::generic_category().message(errno) + ".",
                            std::nullopt};
    }
    std::string body;
    body.reserve(form.contentLength());
    for (std::size_t part = 0; part < form.parts().size(); ++part)
        body.append(form.head(part)).append(form.parts()[part].content.raw());
    task.request.httpBody = Data(std::move(body.append(form.tail())));
    return std::nullopt;
}

// A network answer is offered to the cache; nothing is copied unless it is kept.
void offerToCache(const URLRequest& request, TransferResult& result) {
    URLCache::CachedResponse offered{std::move(*result.response), Data(std::move(result.body))};
    URLCache::shared().store(request, offered);
    result.response = std::move(offered.response);
    result.body = std::move(offered.data).raw();
}

}  // namespace

std::shared_ptr<SessionWorker> SessionWorker::start(const std::string& label,
                                                    std::size_t maximumConnectionsPerHost) {
    LiveWorkers& workers = LiveWorkers::shared();  // the client library is set up before its first use
    auto worker = std::make_shared<SessionWorker>(maximumConnectionsPerHost);
    workers.start(worker, label);
    return worker;
}

SessionWorker::SessionWorker(std::size_t maximumConnectionsPerHost)
    : m_loop(std::make_unique<TransferLoop>(maximumConnectionsPerHost)) {}

void SessionWorker::submit(Task task) {
    bool wasAsleep = false;  // woken outside the lock: the thread may run at once and want it
    {
        const std::lock_guard lock(m_mutex);
        m_submitted.push_back(std::move(task));
        wasAsleep = std::exchange(m_asleep, false);
    }
    if (wasAsleep) m_loop->wake();
}

void SessionWorker::stop() {
    requestQuit(Quit::whenIdle);
    LiveWorkers::shared().join(*this);
}

void SessionWorker::requestQuit(Quit quit) {
    const std::lock_guard lock(m_mutex);
    if (m_ended) return;
    m_quit = std::max(m_quit, quit);
    m_loop->wake();
}

void SessionWorker::run(const std::string& label) {
    beginLibraryThread(label);
    while (takeSubmitted()) {
        m_loop->collect([this](Transfer& transfer, CURLcode code) { onFinished(transfer, code); });
        expire();
        deliver();
        if (!mayWait()) continue;
        m_loop->turn(m_deadlines.empty() ? std::nullopt : std::optional(m_deadlines.begin()->first));
    }
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    if (m_quit == Quit::atOnce) return;  // the process ends: what is in flight stays as it is
    m_idleHandles.clear();
    m_loop.reset();
}

// False when the thread shall end.
bool SessionWorker::takeSubmitted() {
    std::vector<Task> submitted;
    {
        const std::lock_guard lock(m_mutex);
        m_asleep = false;
        if (m_quit == Quit::atOnce || (m_quit == Quit::whenIdle && m_submitted.empty())) return false;
        submitted.swap(m_submitted);
    }
    for (Task& task : submitted) begin(std::move(task));
    return true;
}

bool SessionWorker::mayWait() {
    const std::lock_guard lock(m_mutex);
    m_asleep = m_submitted.empty() && m_quit == Quit::no;
    return m_asleep;
}

void SessionWorker::begin(Task task) {
    if (!m_loop->usable())
        return fail(std::move(task), {Kind::cannotConnect, "No descriptors are left for a session.", {}});
    task->accept = task->request.headers.value("Accept");
    for (const auto& [name, value] : task->core->configuration.headers.fields())
        if (!task->request.headers.value(name)) task->request.headers.set(name, value);
    if (auto error = requestError(task->request, task->hasBody()))
        return fail(std::move(task), std::move(*error));
    if (task->form)
        if (auto error = encodeForm(*task)) return fail(std::move(task), std::move(*error));
    startHop(std::move(task));
}

void SessionWorker::startHop(Task task) {
    if (auto error = missingEvaluatorError(task->core->trustManager.get(), *task->request.url))
        return fail(std::move(task), std::move(*error));
    if (auto cached = URLCache::shared().cachedResponse(task->request))
        return finish(std::move(task),
                      {std::move(cached->response), std::move(cached->data).raw(), std::nullopt});
    startTransfer(std::move(task));
}

void SessionWorker::startTransfer(Task task) {
    task->transfer = std::make_unique<Transfer>(easyHandle(), optionsFor(*task));
    Transfer& transfer = *task->transfer;
    if (!m_loop->add(transfer))
        return fail(std::move(task), {Kind::invalidRequest, "The request cannot be sent.", std::nullopt});
    arm(*task);
    m_live.emplace(&transfer, std::move(task));
}

TransferOptions SessionWorker::optionsFor(const SessionTask& task) const {
    const Origins::Origin origin = m_origins.of(*task.request.url);
    const bool hasContent = task.spool || (task.request.httpBody && !task.request.httpBody->empty());
    return {.request = task.request,
            .spool = task.spool ? &*task.spool : nullptr,
            .prefersHTTP1 = hasContent,
            .freshConnection = !origin.keepsAlive,
            .sharesConnection = origin.multiplexes && !hasContent,
            .maximumIdleAge = origin.maximumIdleAge,
            .maximumResponseBytes = task.core->configuration.maximumResponseBytes,
            .trustManager = task.core->trustManager,
            .sessionHeaders = task.core->configuration.headers,
            .progress = task.progress.get()};
}

void SessionWorker::onFinished(Transfer& transfer, CURLcode code) {
    Task task = take(transfer);
    if (transfer.head().complete()) m_origins.learn(*task->request.url, transfer.head());
    auto outcome = transfer.conclude(code);
    recycle(transfer.takeEasy());
    if (auto* next = std::get_if<Redirection>(&outcome)) return follow(std::move(task), std::move(*next));
    TransferResult& result = std::get<TransferResult>(outcome);
    if (!result.error && result.response) offerToCache(task->request, result);
    finish(std::move(task), std::move(result));
}

void SessionWorker::follow(Task task, Redirection next) {
    constexpr int mostRedirects = 16;
    const std::string from = task->request.url->host().value_or("");
    if (++task->redirects > mostRedirects)
        return fail(std::move(task),
                    {Kind::redirectFailed, from + " redirected too many times.", std::nullopt});
    task->transfer.reset();
    task->request = std::move(next.request);
    if (!next.keepsBody) task->spool.reset();
    if (auto error = requestError(task->request, task->hasBody())) {
        error->kind = Kind::redirectFailed;
        return fail(std::move(task), std::move(*error));
    }
    startHop(std::move(task));
}

void SessionWorker::arm(SessionTask& task) {
    const std::chrono::duration<double> limit(idleLimit(task.request));
    task.deadline = task.transfer->lastActivity() + std::chrono::duration_cast<Clock::duration>(limit);
    m_deadlines.emplace(task.deadline, task.transfer.get());
}

// A deadline is set once and moved only when it is reached, not with every byte.
void SessionWorker::expire() {
    while (!m_deadlines.empty() && m_deadlines.begin()->first <= Clock::now()) {
        Transfer& transfer = *m_deadlines.begin()->second;
        SessionTask& late = *m_live.at(&transfer);
        const Clock::time_point reached = late.deadline;
        m_deadlines.erase(m_deadlines.begin());
        arm(late);
        if (late.deadline > reached) continue;
        Task task = take(transfer);
        TransferResult result = transfer.abandon(timeoutError(task->request));
        recycle(transfer.takeEasy());
        finish(std::move(task), std::move(result));
    }
}

SessionWorker::Task SessionWorker::take(Transfer& transfer) {
    Task task = std::move(m_live.extract(&transfer).mapped());
    m_deadlines.erase({task->deadline, &transfer});
    m_loop->remove(transfer);
    return task;
}

void SessionWorker::finish(Task task, TransferResult result) {
    // Half an answer is withheld: it could pass for an error payload of the server's, which hosts read as
    // success.
    const bool whole = !result.error;
    DataResponse response{std::move(result.response), std::nullopt, std::move(result.error)};
    const bool empty = result.body.empty();
    if (!response.error && task->validates)
        response.error = validationError(task->accept, *response.response, empty);
    if (!response.error) response.error = emptinessError(task->request.httpMethod, *response.response, empty);
    if (whole && (!response.error || !empty)) response.data = Data(std::move(result.body));
    m_completions.emplace_back(
        task->queue, [completion = std::move(task->completion), response = std::move(response)]() mutable {
            completion(std::move(response));
        });
}

void SessionWorker::fail(Task task, SessionError error) {
    finish(std::move(task), {std::nullopt, {}, std::move(error)});
}

void SessionWorker::deliver() {
    for (auto first = m_completions.begin(); first != m_completions.end();) {
        DispatchQueue* const queue = first->first;
        std::vector<DispatchQueue::Work> batch;
        for (; first != m_completions.end() && first->first == queue; ++first)
            batch.push_back(std::move(first->second));
        queue->async(std::move(batch));
    }
    m_completions.clear();
}

EasyHandle SessionWorker::easyHandle() {
    if (m_idleHandles.empty()) return EasyHandle(curl_easy_init());
    EasyHandle easy = std::move(m_idleHandles.back());
    m_idleHandles.pop_back();
    return easy;
}

void SessionWorker::recycle(EasyHandle easy) {
    constexpr std::size_t mostIdleHandles = 64;
    if (m_idleHandles.size() >= mostIdleHandles) return;
    curl_easy_setopt(easy.get(), CURLOPT_COOKIEFILE, nullptr);  // a reset alone leaks that list
    curl_easy_reset(easy.get());
    m_idleHandles.push_back(std::move(easy));
}

}  // namespace torvel
