#include "TorvelPlatform/http/ProtocolRunner.h"

#include "TorvelPlatform/http/SessionCore.h"

#include <limits>
#include <vector>

namespace torvel {

void ProtocolRunner::submit(Task task) {
    task->begin();
    task->memoryThreshold = std::numeric_limits<std::size_t>::max();  // the protocol shall see the body
    if (auto error = task->prepare()) return fail(std::move(task), std::move(*error));
    startHop(std::move(task));
}

void ProtocolRunner::startHop(Task task) {
    if (auto error = task->hopError()) return fail(std::move(task), std::move(*error));
    const URLRequest request = task->request;  // a cancelled task gives up its own
    {
        const std::lock_guard lock(m_mutex);
        m_waiting.insert(task);
    }
    if (task->isCancelled()) return sweep();  // since hopError() asked
    m_protocol->load(request, [self = shared_from_this(), task](TransferResult result) {
        self->answered(task, std::move(result));
    });
}

void ProtocolRunner::answered(const Task& task, TransferResult result) {
    {
        const std::lock_guard lock(m_mutex);
        if (m_waiting.erase(task) == 0) return;
    }
    if (!result.error && !result.response)
        result.error = {SessionError::Kind::badServerResponse, "The protocol answered nothing.",
                        std::nullopt};
    task->maybeSent |= !result.error || result.error->maybeSent;
    if (!task->hops.empty()) task->hops.back().response = result.response;
    if (result.error) return finish(task, std::move(result));

    auto decision =
        decideRedirect(task->request, task->hasBody(), *result.response, task->core->configuration.headers);
    if (decision) {
        if (auto* refused = std::get_if<SessionError>(&*decision)) return fail(task, std::move(*refused));
        if (auto error = task->turn(std::get<Redirection>(std::move(*decision))))
            return fail(task, std::move(*error));
        return startHop(task);
    }
    const std::size_t size = task->request.httpBody ? task->request.httpBody->size() : 0;
    if (task->progress) task->progress->sent(size, size);
    finish(task, std::move(result));
}

void ProtocolRunner::sweep() {
    std::vector<Task> cancelled;
    {
        const std::lock_guard lock(m_mutex);
        for (const Task& task : m_waiting)
            if (task->isCancelled()) cancelled.push_back(task);
        for (const Task& task : cancelled) m_waiting.erase(task);
    }
    for (Task& task : cancelled) fail(task, cancelledError(*task));
}

void ProtocolRunner::finish(Task task, TransferResult result) {
    DispatchQueue& queue = *task->queue;
    queue.async(SessionTask::end(std::move(task), std::move(result)));
}

void ProtocolRunner::fail(Task task, SessionError error) {
    finish(std::move(task), {std::nullopt, {}, std::move(error)});
}

}  // namespace torvel
