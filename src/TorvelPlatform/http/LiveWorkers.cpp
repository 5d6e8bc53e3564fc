#include "TorvelPlatform/http/LiveWorkers.h"

#include <cstdlib>

namespace torvel {

LiveWorkers& LiveWorkers::shared() {
    static LiveWorkers& workers = *new LiveWorkers;
    return workers;
}

LiveWorkers::LiveWorkers() {
    // In this order: what is registered last runs first, and the TLS library registers its own end here.
    loadCurl();
    curl_global_init(CURL_GLOBAL_DEFAULT);
    std::atexit([] { shared().stopAtExit(); });
}

void LiveWorkers::start(std::shared_ptr<SessionWorker> worker, const std::string& label) {
    const std::lock_guard lock(m_mutex);
    if (m_exiting) return;
    joinEnded();
    Entry& entry = m_running[worker.get()];
    entry.worker = std::move(worker);
    entry.thread = std::thread([running = entry.worker, label] { running->run(label); });
}

void LiveWorkers::join(const SessionWorker& worker) {
    Entries::node_type entry;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_running.find(&worker);
        if (found == m_running.end() || found->second.thread.get_id() == std::this_thread::get_id()) return;
        entry = m_running.extract(found);
    }
    entry.mapped().thread.join();
}

void LiveWorkers::joinEnded() {
    for (auto entry = m_running.begin(); entry != m_running.end();) {
        const auto current = entry++;
        if (!current->second.worker->m_ended) continue;
        current->second.thread.join();
        m_running.erase(current);
    }
}

void LiveWorkers::stopAtExit() {
    {
        const std::lock_guard lock(m_mutex);
        m_exiting = true;
        m_dropped.merge(m_running);
    }
    for (auto& [key, entry] : m_dropped) entry.worker->requestQuit(SessionWorker::Quit::atOnce);
    for (auto& [key, entry] : m_dropped)
        if (entry.thread.get_id() != std::this_thread::get_id()) entry.thread.join();
}

}  // namespace torvel
