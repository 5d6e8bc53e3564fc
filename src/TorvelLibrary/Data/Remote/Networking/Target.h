#pragma once

#include "TorvelPlatform/foundation/URL.h"

#include <optional>
#include <string_view>

namespace torvel {

// The URL of a request's target that is one by itself: it starts with "http" and makes a URL once it is
// percent-encoded. Absent for any other target, which then is appended to the server's URL. Any thread.
std::optional<URL> wholeURL(std::string_view target);

}  // namespace torvel
