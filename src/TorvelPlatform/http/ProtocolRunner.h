#pragma once  // internal

#include "TorvelPlatform/http/RequestRunner.h"
#include "TorvelPlatform/http/SessionTask.h"
#include "TorvelPlatform/http/URLProtocol.h"

#include <memory>
#include <mutex>
#include <set>

namespace torvel {

// Carries requests to a protocol on their callers' threads: there is no thread of its own and no socket.
class ProtocolRunner final : public RequestRunner, public std::enable_shared_from_this<ProtocolRunner> {
  public:
    explicit ProtocolRunner(std::shared_ptr<URLProtocol> protocol) : m_protocol(std::move(protocol)) {}

    void submit(std::shared_ptr<SessionTask> task) override;
    void sweep() override;
    void stop() override {}

  private:
    using Task = std::shared_ptr<SessionTask>;

    void startHop(Task task);
    void answered(const Task& task, TransferResult result);
    static void finish(Task task, TransferResult result);
    static void fail(Task task, SessionError error);

    const std::shared_ptr<URLProtocol> m_protocol;
    std::mutex m_mutex;
    std::set<Task> m_waiting;  // guarded by m_mutex; whoever takes a task out of it may end it
};

}  // namespace torvel
