#pragma once  // internal

#include "TorvelPlatform/http/SessionTask.h"

#include <list>
#include <memory>
#include <string>
#include <unordered_map>

namespace torvel {

// Hops that need a connection of their own wait here until one of their origin's few is free, first come,
// first served. The client would hold them, too, but tries each anew whenever any connection comes free: with
// many waiting, that costs more than all the rest of a request. One thread.
class ConnectionSlots {
  public:
    using Task = std::shared_ptr<SessionTask>;

    explicit ConnectionSlots(std::size_t perOrigin) : m_perOrigin(perOrigin) {}

    // Gives the task one of its origin's slots; when none is left, keeps the task and returns nullptr.
    Task enter(Task task);
    // Takes the slot back, if the task has one, and hands it to the task returned; nullptr when none waits.
    Task leave(SessionTask& task);
    // Takes out those of the waiting that were cancelled.
    std::list<Task> takeCancelled();

  private:
    struct Origin {
        std::size_t used = 0;
        std::list<Task> waiting;
    };

    const std::size_t m_perOrigin;
    std::unordered_map<std::string, Origin> m_origins;  // those in use
};

}  // namespace torvel
