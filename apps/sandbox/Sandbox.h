#pragma once

#include "TorvelPlatform/foundation/Outcome.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// A wallet's backend on the loopback interface, for demonstrations and tests: HTTP/1.1 with keep-alive, over
// TLS or plain, that opens request envelopes with its own private key and answers sealed.
//
// The story, under /api/v1 (amounts are decimal strings; the token goes into "Authorization: Bearer TOKEN"):
//   POST login      {"msisdn","pin"} -> {"token","name"}; a new login makes earlier tokens stale
//   GET  balance    -> {"msisdn","currency","balance"}
//   POST transfer   {"to","amount","note"?} -> {"reference","to","amount","balance"}
//   GET  statement  -> {"entries":[{"reference","to","amount","note","balance"}...]}
//   POST documents  one multipart part -> {"field","fileName","contentType","bytes","sha256"}
// Errors are {"message","errorCode"}: 400 for what cannot be read, 401 (never sealed) without a token that
// counts, 404, 405, 422 for what the wallet declines. GET /api/v1/rates fails with status 500 and plain text.
//
// Any of these (and /echo) may be sealed: a body that is a request envelope of either form is opened first
// and its answer sealed in that form; a request with the header field "RequestKey" gets its answer sealed in
// the form of the sandbox's flavour. An envelope that does not open gets a 400 that says why.
//
// ANY /echo answers {"method","target","fields":[[name,value]...],"body","bodyBytes"} for what arrived
// ("body" is the opened text of an envelope).
//
// ANY /misbehave/NAME?QUERY misbehaves; numbers out of range get a 400:
//   status?code=200&body=&type=application/json&field=NAME:VALUE   that answer; `field` may repeat
//   delay?ms=1000           answers {} after a while
//   hang                    never answers
//   drip?bytes=16&ms=50     a body of that many bytes, one at a time
//   truncate?framing=length|chunked|close&end=orderly|cut|reset
//                           half a body; `end`: with close_notify, with a bare FIN, with RST
//   reset                   RST instead of an answer
//   wrong-type              JSON that calls itself text/html
//   redirect?to=URL&status=307
//   loop                    redirects to itself
//   unsealed                {"status":"ok"}, never sealed
//   garbage?kind=KIND       a broken answer envelope: data-not-base64, iv-not-base64, no-iv, iv-not-text,
//                           not-blocks, bad-padding, wrong-key, array, scalar, not-json
//   encoded?coding=gzip|deflate|br&cut=0    JSON in that coding, without its last `cut` bytes
//   large?bytes=1048576     that many bytes, application/octet-stream
namespace torvel::sandbox {

inline constexpr char walletNumber[] = "0700000001";
inline constexpr char walletPin[] = "4321";
inline constexpr char walletBalance[] = "1000.00";

// What the server proves itself with. The server's key is RSA of 2048 bits and its certificate doubles as the
// encryption certificate; it is valid from yesterday for 90 days, for localhost, 127.0.0.1 and ::1.
struct SandboxIdentity {
    std::string caPem, serverPem, serverKeyPem;
    std::string serverDer;

    // A fresh one each time, so that another identity's pin never matches. Making the RSA key takes some 0.1
    // s. `ownAuthority`: signed by an authority of its own (P-256), whose certificate is `caPem`.
    // `selfSigned`: signed by itself; `caPem` is the server's certificate.
    enum class Kind { ownAuthority, selfSigned };
    static SandboxIdentity make(Kind kind = Kind::ownAuthority);

    // Writes ca.pem, server.pem, server.der and server.key (readable by the owner alone) into the folder,
    // which is made when absent. What went wrong, as one line; nothing on success.
    [[nodiscard]] std::optional<std::string> write(const std::filesystem::path& folder) const;
};

struct SandboxOptions {
    std::uint16_t port = 0;             // 0: the system chooses
    std::string flavour = "VelmMoney";  // decides the answer's form where the request cannot
    bool tls = true;
    std::optional<SandboxIdentity> identity = std::nullopt;  // made when absent
};

// One request as it arrived, and what became of it.
struct Exchange {
    std::string requestLine;
    std::vector<std::pair<std::string, std::string>> fields;
    std::string body;           // the bytes on the wire, the first MiB of the request
    std::size_t bodyBytes = 0;  // how many there were
    std::string keyText;        // the key that OpenSSL opened; empty when none came
    std::string plainText;      // what the sandbox read in the body: opened, if it was an envelope
    int status = 0;             // 0: not answered (yet), or answered by hand as some misbehaviours are
    std::string answer;         // the body sent
    std::string plainAnswer;    // the body before it was sealed
};

// Runs from start() to its destruction, which drops every connection and never waits for a peer. All
// operations may be called from any thread.
class Sandbox {
  public:
    // The error is one line.
    static Outcome<std::unique_ptr<Sandbox>, std::string> start(SandboxOptions options = {});
    ~Sandbox();

    std::uint16_t port() const;
    std::string url() const;  // "https://127.0.0.1:PORT", without a slash at its end
    const SandboxIdentity& identity() const;

    // The latest 64, oldest first. An exchange is there before its answer leaves.
    std::vector<Exchange> exchanges() const;

  private:
    struct State;
    explicit Sandbox(std::unique_ptr<State> state);
    std::unique_ptr<State> m_state;
};

}  // namespace torvel::sandbox
