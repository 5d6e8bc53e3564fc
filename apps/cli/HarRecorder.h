#pragma once

#include "TorvelPlatform/http/EventMonitor.h"

#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace torvel::cli {

// Records requests as an HTTP archive (HAR 1.2), which browsers' network panels import. What may hold a
// secret is left out unless it is known to be harmless: values of header fields outside a list, the values in
// a query, and bodies but for sealed envelopes.
class HarRecorder final : public EventMonitor {
  public:
    void requestDidEnd(const std::vector<HopMetrics>& hops, const DataResponse& response) override;

    // What went wrong, as one line; nothing on success.
    [[nodiscard]] std::optional<std::string> write(const std::filesystem::path& file) const;

  private:
    mutable std::mutex m_mutex;
    nlohmann::ordered_json m_entries = nlohmann::ordered_json::array();  // guarded by m_mutex
};

}  // namespace torvel::cli
