#include "TorvelPlatform/dispatch/DispatchQueue.h"

#include "TorvelPlatform/dispatch/LibraryThread.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace torvel {

namespace {

using Clock = std::chrono::steady_clock;

// This room stands below the foundation and its fatalError.
[[noreturn]] void misuse(const char* message) {
    std::fprintf(stderr, "Fatal error: %s\n", message);
    std::abort();
}

void runAll(std::vector<DispatchQueue::Work>& batch) noexcept {
    for (DispatchQueue::Work& work : batch) {
        work();
        work = nullptr;  // what an item holds is released before the next one runs
    }
}

// The main queue's descriptor: counts up with every signal, a read takes it back to zero.
class Signal {
  public:
    Signal() : m_fd(eventfd(0, EFD_CLOEXEC)) {
        if (m_fd < 0) misuse("no descriptor left for the main queue");
    }
    int fd() const { return m_fd; }
    void raise() const {
        const std::uint64_t one = 1;
        while (write(m_fd, &one, sizeof one) < 0 && errno == EINTR) {
        }
    }
    // Blocks until raised.
    void take() const {
        std::uint64_t count = 0;
        while (read(m_fd, &count, sizeof count) < 0 && errno == EINTR) {
        }
    }
    bool waitFor(std::chrono::milliseconds timeout) const {
        pollfd waiting{m_fd, POLLIN, 0};
        constexpr std::chrono::milliseconds longest(60 * 60 * 1000);
        return poll(&waiting, 1, static_cast<int>(std::clamp(timeout, timeout.zero(), longest).count())) > 0;
    }

  private:
    int m_fd;
};

}  // namespace

struct DispatchQueue::State {
    explicit State(std::string queueLabel) : label(std::move(queueLabel)) {}

    const std::string label;
    std::mutex mutex;
    std::vector<Work> waiting;  // guarded by mutex, as is all below unless said otherwise

    // The main queue's. The signal is raised once by who ended the queue's emptiness, and taken by who brings
    // it back. It is raised outside the mutex: the woken thread may run at once and want that.
    std::optional<Signal> signal;
    bool signalTaken = false;    // run() has read the signal, the items still wait
    bool draining = false;       // draining thread only
    bool stopRequested = false;  // draining thread only

    // A serial queue's.
    std::condition_variable posted;
    bool closing = false;
    std::thread thread;  // owner only

    template <class Append>
    void post(Append append);
    std::vector<Work> take();
    void serve();
};

template <class Append>
void DispatchQueue::State::post(Append append) {
    {
        const std::lock_guard lock(mutex);
        const bool wasEmpty = waiting.empty();
        append(waiting);
        if (!wasEmpty || waiting.empty()) return;
    }
    if (signal) {
        signal->raise();
    } else {
        posted.notify_one();
    }
}

std::vector<DispatchQueue::Work> DispatchQueue::State::take() {
    std::vector<Work> batch;
    const std::lock_guard lock(mutex);
    if (!waiting.empty() && !signalTaken) signal->take();
    signalTaken = false;
    batch.swap(waiting);
    return batch;
}

// A serial queue's thread.
void DispatchQueue::State::serve() {
    beginLibraryThread(label);
    std::vector<Work> batch;
    for (;;) {
        {
            std::unique_lock lock(mutex);
            posted.wait(lock, [this] { return closing || !waiting.empty(); });
            if (waiting.empty()) return;
            batch.swap(waiting);
        }
        runAll(batch);
        batch.clear();
    }
}

DispatchQueue& DispatchQueue::main() {
    // Never destroyed: threads may post while the process ends.
    static DispatchQueue& queue = *[] {
        auto state = std::make_shared<State>("main");
        state->signal.emplace();
        return new DispatchQueue(std::move(state));
    }();
    return queue;
}

DispatchQueue::DispatchQueue(std::shared_ptr<State> state) : m_state(std::move(state)) {}

DispatchQueue::DispatchQueue(std::string label) : m_state(std::make_shared<State>(std::move(label))) {
    m_state->thread = std::thread([state = m_state] { state->serve(); });
}

DispatchQueue::~DispatchQueue() {
    {
        const std::lock_guard lock(m_state->mutex);
        m_state->closing = true;
        m_state->posted.notify_one();
    }
    if (m_state->thread.get_id() == std::this_thread::get_id()) {
        m_state->thread.detach();
    } else {
        m_state->thread.join();
    }
}

const std::string& DispatchQueue::label() const { return m_state->label; }

// What is posted may end the queue before post() is through, whose end it must not take along.
void DispatchQueue::async(Work work) {
    const std::shared_ptr<State> state = m_state;
    state->post([&](std::vector<Work>& waiting) { waiting.push_back(std::move(work)); });
}

void DispatchQueue::async(std::vector<Work> batch) {
    const std::shared_ptr<State> state = m_state;
    state->post([&](std::vector<Work>& waiting) {
        if (waiting.empty()) return waiting.swap(batch);
        waiting.insert(waiting.end(), std::make_move_iterator(batch.begin()),
                       std::make_move_iterator(batch.end()));
    });
}

std::size_t DispatchQueue::drain() {
    if (!m_state->signal) misuse("drain() belongs to the main queue");
    if (m_state->draining) return 0;
    std::vector<Work> batch = m_state->take();
    m_state->draining = true;
    runAll(batch);
    m_state->draining = false;
    return batch.size();
}

void DispatchQueue::run() {
    if (!m_state->signal) misuse("run() belongs to the main queue");
    if (m_state->draining) misuse("run() called from inside an item of the main queue");
    m_state->stopRequested = false;
    while (!m_state->stopRequested) {
        m_state->signal->take();
        {
            const std::lock_guard lock(m_state->mutex);
            m_state->signalTaken = true;
        }
        drain();
    }
}

void DispatchQueue::stop() {
    if (!m_state->signal) misuse("stop() belongs to the main queue");
    async([state = m_state.get()] { state->stopRequested = true; });
}

bool DispatchQueue::runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    if (!m_state->signal) misuse("runUntil() belongs to the main queue");
    if (m_state->draining) misuse("runUntil() called from inside an item of the main queue");
    const Clock::time_point end = Clock::now() + timeout;
    while (!done()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
        if (left <= left.zero()) return false;
        if (m_state->signal->waitFor(left)) drain();
    }
    return true;
}

int DispatchQueue::wakeFd() const {
    if (!m_state->signal) misuse("wakeFd() belongs to the main queue");
    return m_state->signal->fd();
}

}  // namespace torvel
