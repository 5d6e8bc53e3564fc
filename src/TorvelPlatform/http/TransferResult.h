#pragma once

#include "TorvelPlatform/http/HTTPURLResponse.h"
#include "TorvelPlatform/http/SessionError.h"

#include <optional>
#include <string>

namespace torvel {

// How one hop of a request ended: an answer, or an error with what had arrived of one. A value; threads may
// share one that none changes.
struct TransferResult {
    std::optional<HTTPURLResponse> response;  // The head. Always there when there is no error.
    std::string body;                         // Decompressed.
    std::optional<SessionError> error;        // Why there is no whole answer.
};

}  // namespace torvel
