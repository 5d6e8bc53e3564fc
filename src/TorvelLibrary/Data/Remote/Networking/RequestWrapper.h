#pragma once

#include "TorvelPlatform/http/URLRequest.h"

namespace torvel {

// A request interceptor. Runs on the thread that called the client.
class RequestWrapper {
  public:
    virtual ~RequestWrapper() = default;

    // Returns the request to go on with; what it did to the argument itself is discarded.
    virtual URLRequest wrapRequest(URLRequest& request) = 0;
};

}  // namespace torvel
