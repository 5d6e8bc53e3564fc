#include "TorvelPlatform/http/UploadProgress.h"

namespace torvel {

void UploadProgress::sent(std::uint64_t bytes, std::uint64_t ofTotal) {
    if (bytes == 0 || ofTotal == 0) return;
    const double fraction =
        bytes >= ofTotal ? 1.0 : static_cast<double>(bytes) / static_cast<double>(ofTotal);
    if (fraction <= m_latest.load()) return;
    m_latest.store(fraction);
    if (!m_posted.exchange(true)) m_queue.async([self = shared_from_this()] { self->report(); });
}

void UploadProgress::report() {
    m_posted.store(false);  // before reading, so that a later fraction is never lost
    const double fraction = m_latest.load();
    if (fraction <= m_reported) return;
    m_reported = fraction;
    m_handler(fraction);
}

}  // namespace torvel
