#pragma once

#include "TorvelPlatform/foundation/URL.h"
#include "TorvelPlatform/http/URLRequest.h"

#include <string>

namespace torvel {

// The head of an answer.
struct HTTPURLResponse {
    URL url;              // of the last hop
    int statusCode;       // as received
    HTTPHeaders headers;  // in the order received
};

}  // namespace torvel
