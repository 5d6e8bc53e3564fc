#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/URL.h"

#include <optional>

namespace torvel {

// Operations that host screens call without knowing which room a value lives in.
class Utils {
  public:
    // The bytes of a file; a failure is logged as an error and gives an absent result.
    static std::optional<Data> loadFileContents(const URL& url);
};

}  // namespace torvel
