#include "TorvelPlatform/http/Transfer.h"

#include <algorithm>

// What the client knows of a hop when it is over.
namespace torvel {
namespace {

std::uint64_t count(CURL* easy, CURLINFO info) {
    curl_off_t bytes = 0;
    curl_easy_getinfo(easy, info, &bytes);
    return static_cast<std::uint64_t>(bytes);
}

int httpVersion(CURL* easy) {
    long version = 0;
    curl_easy_getinfo(easy, CURLINFO_HTTP_VERSION, &version);
    switch (version) {
        case CURL_HTTP_VERSION_1_0:
            return 10;
        case CURL_HTTP_VERSION_1_1:
            return 11;
        case CURL_HTTP_VERSION_2_0:
            return 20;
        default:
            return 0;
    }
}

}  // namespace

void Transfer::measure(HopMetrics& hop) const {
    const double begun = std::chrono::duration<double>(m_begun - hop.start).count();
    hop.queued = std::chrono::duration<double>(m_leftQueue - hop.start).count();
    const auto moment = [&](CURLINFO info) -> std::optional<double> {
        curl_off_t microseconds = 0;
        curl_easy_getinfo(easy(), info, &microseconds);
        if (microseconds == 0) return std::nullopt;
        return std::max(hop.queued, begun + static_cast<double>(microseconds) / 1e6);
    };
    long connections = 0;
    curl_easy_getinfo(easy(), CURLINFO_NUM_CONNECTS, &connections);
    hop.reusedConnection = m_attempts > 0 && connections == 0;
    if (!hop.reusedConnection && !m_queued) {
        hop.nameLookedUp = moment(CURLINFO_NAMELOOKUP_TIME_T);
        hop.connected = moment(CURLINFO_CONNECT_TIME_T);
        hop.secured = moment(CURLINFO_APPCONNECT_TIME_T);
        // The client forgets the moment when the handshake fails.
        if (!hop.connected && m_phase == SessionError::Phase::securing)
            hop.connected = std::chrono::duration<double>(m_securingSince - hop.start).count();
    }
    if (m_attempts > 0) hop.sending = moment(CURLINFO_PRETRANSFER_TIME_T);
    hop.firstByte = moment(CURLINFO_STARTTRANSFER_TIME_T);
    hop.bytesSent = count(easy(), CURLINFO_SIZE_UPLOAD_T);
    hop.bytesReceived = m_received;
    hop.httpVersion = httpVersion(easy());
    if (m_head.complete()) hop.response = response();
}

}  // namespace torvel
