#pragma once

#include "TorvelPlatform/security/SecTrust.h"

#include <functional>
#include <optional>
#include <string>

namespace torvel {

// Decides whether the server of one connection is trusted. Called during the handshake, on the thread that
// drives the connection, before a byte of any request is sent.
using TLSTrustDecision = std::function<bool(SecTrust& trust)>;

// Makes `decision` the only judge of the peer's certificates for connections made from an OpenSSL SSL_CTX
// (handed over as the HTTP client's hook gives it), and sets the floor: TLS 1.2, no renegotiation.
// The context owns the decision and releases it with the last connection. False when the context is unfit.
bool installServerTrust(void* sslContext, TLSTrustDecision decision);

// Whether the peer of an OpenSSL SSL closed its side with close_notify, without which the end of an answer
// that is delimited by the end of the connection may be a cut (RFC 8446, 6.1).
bool peerClosedCleanly(void* ssl);

// Whether both ends of an OpenSSL SSL agreed on HTTP/2 in the handshake (RFC 7301). False for nullptr.
bool agreedOnHTTP2(void* ssl);

}  // namespace torvel
