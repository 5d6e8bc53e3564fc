#pragma once

#include <memory>

namespace torvel {

struct SessionTask;

// A request under way, for whoever may want to give it up. It may be copied, and dropped at once: it keeps
// nothing alive. Any thread.
class RequestHandle {
  public:
    // Of no request.
    RequestHandle() = default;
    // The library's own.
    explicit RequestHandle(std::weak_ptr<SessionTask> task) : m_task(std::move(task)) {}

    // Gives the request up: unless its completion has begun, it ends with the error `cancelled`, whatever
    // has arrived meanwhile. Never calls back before it returns. After the end it does nothing.
    void cancel() const;

  private:
    std::weak_ptr<SessionTask> m_task;
};

}  // namespace torvel
