#include "TorvelPlatform/http/SessionWorker.h"

#include "TorvelPlatform/dispatch/LibraryThread.h"
#include "TorvelPlatform/http/LiveWorkers.h"
#include "TorvelPlatform/http/SessionCore.h"
#include "TorvelPlatform/http/URLCache.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <thread>

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

// The variables that the client looks for.
bool proxyIsGiven() {
    constexpr std::array names{"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"};
    return std::any_of(names.begin(), names.end(),
                       [](const char* name) { return std::getenv(name) != nullptr; });
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
    : m_loop(std::make_unique<TransferLoop>(maximumConnectionsPerHost)),
      m_mayUseProxy(proxyIsGiven()),
      m_slots(maximumConnectionsPerHost) {}

void SessionWorker::submit(Task task) {
    bool wasAsleep = false;  // woken outside the lock: the thread may run at once and want it
    {
        const std::lock_guard lock(m_mutex);
        m_submitted.push_back(std::move(task));
        wasAsleep = std::exchange(m_asleep, false);
    }
    if (wasAsleep) m_loop->wake();
}

void SessionWorker::sweep() {
    const std::lock_guard lock(m_mutex);
    m_sweeps = true;
    // Woken inside the lock: no request of the caller's keeps the thread from ending after it.
    if (std::exchange(m_asleep, false)) m_loop->wake();
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
        const bool hasAnswers = !m_completions.empty();
        deliver();
        // Who gets the last answer often sends the next request at once: a thread that lets it go first,
        // instead of falling asleep, need not be woken for that.
        if (hasAnswers && m_live.empty() && !isWanted()) std::this_thread::yield();
        if (!mayWait()) continue;
        m_loop->turn(m_live.empty() ? std::nullopt : std::optional(m_live.begin()->first.first));
    }
    const std::lock_guard lock(m_mutex);
    m_ended = true;
    if (m_quit == Quit::atOnce) return;  // the process ends: what is in flight stays as it is
    m_usedHandles.clear();
    m_loop.reset();
}

// False when the thread shall end.
bool SessionWorker::takeSubmitted() {
    std::vector<Task> submitted;
    bool sweeps = false;
    {
        const std::lock_guard lock(m_mutex);
        m_asleep = false;
        if (m_quit == Quit::atOnce || (m_quit == Quit::whenIdle && m_submitted.empty())) return false;
        submitted.swap(m_submitted);
        sweeps = std::exchange(m_sweeps, false);
    }
    for (Task& task : submitted) begin(std::move(task));
    if (sweeps) giveUpCancelled();
    return true;
}

bool SessionWorker::isWanted() {
    const std::lock_guard lock(m_mutex);
    return !m_submitted.empty() || m_sweeps || m_quit != Quit::no;
}

bool SessionWorker::mayWait() {
    const std::lock_guard lock(m_mutex);
    m_asleep = m_submitted.empty() && !m_sweeps && m_quit == Quit::no;
    return m_asleep;
}

void SessionWorker::begin(Task task) {
    task->begin();
    if (!m_loop->usable())
        return fail(std::move(task), {Kind::cannotConnect, "No descriptors are left for a session.", {}});
    if (auto error = task->prepare()) return fail(std::move(task), std::move(*error));
    startHop(std::move(task));
}

void SessionWorker::startHop(Task task) {
    if (auto error = task->hopError()) return fail(std::move(task), std::move(*error));
    if (auto cached = URLCache::shared().cachedResponse(task->request)) {
        if (!task->hops.empty()) {
            task->hops.back().cached = true;
            task->hops.back().response = cached->response;
        }
        return finish(std::move(task),
                      {std::move(cached->response), std::move(cached->data).raw(), std::nullopt});
    }
    task->origin = Origins::keyOf(*task->request.url);
    if (needsOwnConnection(*task)) task = m_slots.enter(std::move(task));
    if (task) startTransfer(std::move(task));
}

// Many HTTP/2 requests share a connection, but only those without content go that way. Which servers speak
// it is known from their first answer on; until then the client counts the connections alone.
bool SessionWorker::needsOwnConnection(const SessionTask& task) const {
    return !maySpeakHTTP2(task) || task.hasContent();
}

bool SessionWorker::maySpeakHTTP2(const SessionTask& task) const {
    return task.origin.starts_with("https:") && m_origins.of(task.origin).multiplexes.value_or(true);
}

void SessionWorker::leaveSlot(SessionTask& task) {
    if (Task next = m_slots.leave(task)) startTransfer(std::move(next));
}

void SessionWorker::startTransfer(Task task) {
    task->transfer = std::make_unique<Transfer>(handleFor(*task), optionsFor(*task));
    Transfer& transfer = *task->transfer;
    if (!m_loop->add(transfer)) {
        leaveSlot(*task);
        return fail(std::move(task), {Kind::invalidRequest, "The request cannot be sent.", std::nullopt});
    }
    const Clock::time_point deadline = transfer.renewDeadline(idleLimit(task->request));
    m_live.emplace(std::pair(deadline, &transfer), std::move(task));
}

ClientHandle SessionWorker::handleFor(const SessionTask& task) {
    const bool overHTTP2 = m_origins.of(task.origin).multiplexes.value_or(false) && !m_mayUseProxy;
    if (m_usedHandles.empty() || !overHTTP2 || task.request.httpMethod != "GET") return {};
    ClientHandle handle = std::move(m_usedHandles.back());
    m_usedHandles.pop_back();
    return handle;
}

TransferOptions SessionWorker::optionsFor(const SessionTask& task) const {
    const Origins::Origin origin = m_origins.of(task.origin);
    return {.request = task.request,
            .form = task.stream ? &*task.stream : nullptr,
            .mayShare = !needsOwnConnection(task),
            .keepsApart = maySpeakHTTP2(task) && task.hasContent(),
            .freshConnection = !origin.keepsAlive,
            .mayUseProxy = m_mayUseProxy,
            .maximumIdleAge = origin.maximumIdleAge,
            .maximumResponseBytes = task.core->configuration.maximumResponseBytes,
            .trustManager = task.core->trustManager,
            .sessionHeaders = task.core->configuration.headers,
            .progress = task.progress.get()};
}

void SessionWorker::onFinished(Transfer& transfer, CURLcode code) {
    Task task = take(transfer);
    if (transfer.startsAnew()) {
        m_origins.learnHTTP1(task->origin);
        return startHop(std::move(task));
    }
    auto outcome = transfer.conclude(code);
    constexpr std::size_t mostUsedHandles = 64;
    if (transfer.head().multiplexed() && task->request.httpMethod == "GET" &&
        m_usedHandles.size() < mostUsedHandles)
        m_usedHandles.push_back(transfer.takeHandle());
    if (auto* next = std::get_if<Redirection>(&outcome)) return follow(std::move(task), std::move(*next));
    TransferResult& result = std::get<TransferResult>(outcome);
    if (!result.error && result.response) offerToCache(task->request, result);
    finish(std::move(task), std::move(result));
}

void SessionWorker::follow(Task task, Redirection next) {
    if (auto error = task->turn(std::move(next))) return fail(std::move(task), std::move(*error));
    startHop(std::move(task));
}

// A deadline is set once and moved only when it is reached, not with every byte.
void SessionWorker::expire() {
    const Clock::time_point now = Clock::now();
    while (!m_live.empty() && m_live.begin()->first.first <= now) {
        auto late = m_live.extract(m_live.begin());
        const auto [reached, transfer] = late.key();
        const URLRequest& request = late.mapped()->request;
        late.key().first = transfer->renewDeadline(idleLimit(request));
        m_live.insert(std::move(late));
        if (transfer->deadline() <= reached) abandon(*transfer, timeoutError(request));
    }
}

void SessionWorker::giveUpCancelled() {
    for (Task& task : m_slots.takeCancelled()) {
        SessionError error = cancelledError(*task);
        fail(std::move(task), std::move(error));
    }
    std::vector<Task> cancelled;
    for (const auto& [key, task] : m_live)
        if (task->isCancelled()) cancelled.push_back(task);
    for (const Task& task : cancelled) abandon(*task->transfer, cancelledError(*task));
}

void SessionWorker::abandon(Transfer& transfer, SessionError error) {
    Task task = take(transfer);
    TransferResult result = transfer.abandon(std::move(error));
    finish(std::move(task), std::move(result));
}

SessionWorker::Task SessionWorker::take(Transfer& transfer) {
    Task task = std::move(m_live.extract({transfer.deadline(), &transfer}).mapped());
    m_loop->remove(transfer);
    task->maybeSent |= transfer.maybeSent();
    if (!task->hops.empty() && !transfer.startsAnew()) transfer.measure(task->hops.back());
    // Before the next task starts, which the server's hints concern. With content it was not offered HTTP/2.
    if (transfer.head().complete()) m_origins.learn(task->origin, transfer.head(), !task->hasContent());
    leaveSlot(*task);
    return task;
}

void SessionWorker::finish(Task task, TransferResult result) {
    if (task->queue != m_queue) deliver();
    m_queue = task->queue;
    m_completions.push_back(SessionTask::end(std::move(task), std::move(result)));
}

void SessionWorker::fail(Task task, SessionError error) {
    finish(std::move(task), {std::nullopt, {}, std::move(error)});
}

void SessionWorker::deliver() {
    if (!m_completions.empty()) m_queue->async(std::exchange(m_completions, {}));
}

}  // namespace torvel
