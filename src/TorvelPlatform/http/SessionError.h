#pragma once

#include "TorvelPlatform/http/ServerTrustManager.h"

#include <optional>
#include <string>

namespace torvel {

// Why a request failed. `localizedDescription` is a sentence for logs and developers.
struct SessionError {
    // What went wrong.
    enum class Kind {
        invalidRequest,  // nothing could be sent: no http(s) URL, no such spool file
        cannotFindHost,
        cannotConnect,
        secureConnectionFailed,  // the TLS handshake failed for another reason than trust
        serverTrustEvaluationFailed,
        timedOut,
        connectionLost,     // reset, cut or closed before the answer was whole
        badServerResponse,  // not HTTP, bad encoding, over a size bound
        redirectFailed,
        unacceptableStatusCode,
        unacceptableContentType,
        emptyResponse,  // a valid response without bytes where bytes are expected
        cancelled,
    };
    Kind kind;                          // what went wrong
    std::string localizedDescription;   // a sentence
    std::optional<TrustFailure> trust;  // present for serverTrustEvaluationFailed
};

}  // namespace torvel
