#pragma once

#include "TorvelPlatform/http/EventMonitor.h"

namespace torvel {

// Writes one line of information a request to the log, when it is over: method and location, how it ended,
// when each step was reached, and how much was sent and received. No query, no header field, no body. Any
// thread.
class RequestLog final : public EventMonitor {
  public:
    void requestDidEnd(const std::vector<HopMetrics>& hops, const DataResponse& response) override;
};

}  // namespace torvel
