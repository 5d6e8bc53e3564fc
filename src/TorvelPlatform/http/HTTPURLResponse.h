#pragma once

#include "TorvelPlatform/foundation/URL.h"
#include "TorvelPlatform/http/URLRequest.h"

#include <string>

namespace torvel {

// The head of an answer. A value; threads may share one that none changes.
struct HTTPURLResponse {
    URL url;              // of the last hop
    int statusCode;       // as received
    HTTPHeaders headers;  // in the order received
};

}  // namespace torvel
