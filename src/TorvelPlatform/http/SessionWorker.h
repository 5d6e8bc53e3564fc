#pragma once  // internal

#include "TorvelPlatform/http/ConnectionSlots.h"
#include "TorvelPlatform/http/Origins.h"
#include "TorvelPlatform/http/SessionTask.h"
#include "TorvelPlatform/http/TransferLoop.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace torvel {

// A session's thread: takes requests in, drives their transfers, and posts their completions, those of one
// turn together. Each request leaves through finish(), once.
class SessionWorker final : public RequestRunner {
  public:
    static std::shared_ptr<SessionWorker> start(const std::string& label,
                                                std::size_t maximumConnectionsPerHost);
    explicit SessionWorker(std::size_t maximumConnectionsPerHost);

    void submit(std::shared_ptr<SessionTask> task) override;
    void sweep() override;
    // Ends the thread and waits for that unless it is the calling one.
    void stop() override;

  private:
    friend class LiveWorkers;
    using Task = std::shared_ptr<SessionTask>;
    enum class Quit { no, whenIdle, atOnce };

    void requestQuit(Quit quit);
    void run(const std::string& label);
    bool takeSubmitted();
    bool isWanted();
    bool mayWait();

    void begin(Task task);
    void startHop(Task task);
    void startTransfer(Task task);
    bool needsOwnConnection(const SessionTask& task) const;
    bool maySpeakHTTP2(const SessionTask& task) const;
    ClientHandle handleFor(const SessionTask& task);
    TransferOptions optionsFor(const SessionTask& task) const;
    void leaveSlot(SessionTask& task);
    void onFinished(Transfer& transfer, CURLcode code);
    void follow(Task task, Redirection next);
    void expire();
    void giveUpCancelled();
    void abandon(Transfer& transfer, SessionError error);
    Task take(Transfer& transfer);

    void finish(Task task, TransferResult result);
    void fail(Task task, SessionError error);
    void deliver();

    std::mutex m_mutex;
    std::vector<Task> m_submitted;  // guarded by m_mutex, as are the next three
    bool m_sweeps = false;
    Quit m_quit = Quit::no;
    bool m_asleep = false;
    std::atomic<bool> m_ended{false};

    std::unique_ptr<TransferLoop> m_loop;  // from here on the thread's own, but for wake()
    std::map<std::pair<TransferLoop::Clock::time_point, Transfer*>, Task> m_live;  // by deadline
    const bool m_mayUseProxy;
    Origins m_origins;
    ConnectionSlots m_slots;
    std::vector<ClientHandle> m_usedHandles;
    DispatchQueue* m_queue = nullptr;  // the one that these are for
    std::vector<DispatchQueue::Work> m_completions;
};

}  // namespace torvel
