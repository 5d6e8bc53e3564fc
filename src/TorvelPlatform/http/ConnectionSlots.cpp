#include "TorvelPlatform/http/ConnectionSlots.h"

#include <utility>

namespace torvel {

ConnectionSlots::Task ConnectionSlots::enter(Task task) {
    Origin& origin = m_origins[task->origin];
    if (origin.used == m_perOrigin) {
        origin.waiting.push_back(std::move(task));
        return nullptr;
    }
    ++origin.used;
    task->hasSlot = true;
    return task;
}

ConnectionSlots::Task ConnectionSlots::leave(SessionTask& task) {
    if (!std::exchange(task.hasSlot, false)) return nullptr;
    const auto found = m_origins.find(task.origin);
    Origin& origin = found->second;
    if (origin.waiting.empty()) {
        if (--origin.used == 0) m_origins.erase(found);
        return nullptr;
    }
    Task next = std::move(origin.waiting.front());
    origin.waiting.pop_front();
    next->hasSlot = true;
    return next;
}

std::list<ConnectionSlots::Task> ConnectionSlots::takeCancelled() {
    std::list<Task> cancelled;
    for (auto& [key, origin] : m_origins) {
        for (auto next = origin.waiting.begin(); next != origin.waiting.end();) {
            const auto task = next++;
            if ((*task)->isCancelled()) cancelled.splice(cancelled.end(), origin.waiting, task);
        }
    }
    return cancelled;
}

}  // namespace torvel
