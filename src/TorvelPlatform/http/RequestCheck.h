#pragma once  // internal

#include "TorvelPlatform/http/SessionError.h"
#include "TorvelPlatform/http/URLRequest.h"

#include <optional>

namespace torvel {

// Why a request cannot be sent: no http(s) URL with a host, a method or header field that is none (and could
// smuggle others in), a body where the platform allows none. Absent when it can.
std::optional<SessionError> requestError(const URLRequest& request, bool hasBody);

}  // namespace torvel
