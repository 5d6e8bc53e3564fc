#include "TorvelPlatform/http/ConnectionSlots.h"

#include <algorithm>
#include <iterator>

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

std::vector<ConnectionSlots::Task> ConnectionSlots::takeCancelled() {
    std::vector<Task> cancelled;
    for (auto& [key, origin] : m_origins) {
        const auto first = std::stable_partition(origin.waiting.begin(), origin.waiting.end(),
                                                 [](const Task& task) { return !task->isCancelled(); });
        std::move(first, origin.waiting.end(), std::back_inserter(cancelled));
        origin.waiting.erase(first, origin.waiting.end());
    }
    return cancelled;
}

}  // namespace torvel
