#pragma once  // internal

#include "TorvelPlatform/http/Curl.h"
#include "TorvelPlatform/http/SessionError.h"

#include <string_view>

namespace torvel {

// What a failed transfer means for the caller. `detail` is the client's own text, possibly empty, and
// `systemError` the errno of a failed connection attempt, or 0.
SessionError transferError(CURLcode code, std::string_view host, std::string_view detail, long systemError);

}  // namespace torvel
