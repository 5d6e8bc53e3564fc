#pragma once

#include "TorvelPlatform/http/ServerTrustManager.h"

#include <optional>
#include <string>

namespace torvel {

// Why a request failed. A value; threads may share one that none changes.
struct SessionError {
    // What failed.
    enum class Kind {
        invalidRequest,               // Nothing could be sent: no http(s) URL, for example.
        cannotFindHost,               // The name look-up failed.
        cannotConnect,                // No connection could be made.
        secureConnectionFailed,       // The TLS handshake failed for another reason than trust.
        serverTrustEvaluationFailed,  // The server was refused; `trust` says why.
        timedOut,                     // No byte moved for too long; `phase` says where.
        connectionLost,               // Reset, cut or closed before the answer was whole.
        badServerResponse,            // Not HTTP, bad encoding, over a size bound.
        redirectFailed,               // A redirect that must not be followed.
        unacceptableStatusCode,       // The status is not 200 to 299.
        unacceptableContentType,      // The content type is none that the request accepts.
        emptyResponse,                // A valid response without bytes where bytes are expected.
        cancelled,                    // Given up by the caller.
    };
    // What a request was at when its time was up.
    enum class Phase {
        lookingUpName,
        connecting,
        securing,  // In the TLS handshake.
        sending,
        waiting,    // All was sent, nothing of an answer has come.
        receiving,  // Within the answer.
    };

    // What went wrong.
    Kind kind;
    // A sentence for logs and developers.
    std::string localizedDescription;
    // Present for serverTrustEvaluationFailed.
    std::optional<TrustFailure> trust;
    // Present for timedOut.
    std::optional<Phase> phase = std::nullopt;
    // False: certainly no byte of the request was handed to the network, so that it may be repeated. True:
    // the server may have acted on it.
    bool maybeSent = false;

    // Whether no server could be reached: the device or the server is offline.
    bool isOffline() const { return kind == Kind::cannotFindHost || kind == Kind::cannotConnect; }
};

}  // namespace torvel
