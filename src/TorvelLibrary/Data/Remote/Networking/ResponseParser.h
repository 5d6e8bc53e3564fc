#pragma once

#include "TorvelPlatform/foundation/Data.h"

namespace torvel {

// A response interceptor. Runs on the main queue.
class ResponseParser {
  public:
    virtual ~ResponseParser() = default;

    // Returns the bytes to go on with.
    virtual Data parseResponse(Data data) = 0;
};

}  // namespace torvel
