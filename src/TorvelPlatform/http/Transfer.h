#pragma once  // internal

#include "TorvelPlatform/http/ContentDecoder.h"
#include "TorvelPlatform/http/Curl.h"
#include "TorvelPlatform/http/EventMonitor.h"
#include "TorvelPlatform/http/FieldList.h"
#include "TorvelPlatform/http/FormStream.h"
#include "TorvelPlatform/http/Redirect.h"
#include "TorvelPlatform/http/ResponseHead.h"
#include "TorvelPlatform/http/ServerTrustManager.h"
#include "TorvelPlatform/http/TransferResult.h"
#include "TorvelPlatform/http/UploadProgress.h"

#include <array>
#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <variant>

namespace torvel {

// When a byte last moved. The transfer and the socket that it uses write it.
struct Activity {
    std::chrono::steady_clock::time_point last = std::chrono::steady_clock::now();
};

// What a hop is sent with. The references outlive the transfer.
struct TransferOptions {
    const URLRequest& request;
    const FormStream* form;  // the body, when it is not the request's own
    // HTTP/2, that is. Not for bodies: the client loses answers that come before it has sent all.
    bool mayShare;
    bool keepsApart;  // from the connections that others may share
    bool freshConnection;
    bool mayUseProxy;
    long maximumIdleAge;  // seconds that a kept-alive connection may have been idle
    std::size_t maximumResponseBytes;
    std::shared_ptr<const ServerTrustManager> trustManager;
    const HTTPHeaders& sessionHeaders;
    UploadProgress* progress;
};

// What a hop is driven with. A handle that was used remembers where the last field of its former answer
// stood, which is freed by then, and follows that when an answer begins with a folded line. HTTP/2 has no
// such lines, so a used handle serves that alone; and GET requests alone, for what others set would stay.
struct ClientHandle {
    EasyHandle easy{curl_easy_init()};
    bool used = false;
};

// One hop of a request over an easy handle: one request sent at most once, one answer. The session's thread.
class Transfer {
  public:
    Transfer(ClientHandle handle, const TransferOptions& options);
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;

    CURL* easy() const { return m_handle.easy.get(); }
    // For another one, when this transfer is concluded.
    ClientHandle takeHandle() { return {.easy = std::move(m_handle.easy), .used = true}; }
    const ResponseHead& head() const { return m_head; }
    // When the transfer has been idle for too long, unless a byte moves until then. Waiting for one of the
    // host's connections is no idleness: whoever has them is watched.
    std::chrono::steady_clock::time_point deadline() const { return m_deadline; }
    // Counts `idleLimit` seconds from the last activity on.
    std::chrono::steady_clock::time_point renewDeadline(double idleLimit);
    // What the socket in use reports to, so that even half a header line counts; nullptr for a shared one.
    std::shared_ptr<Activity> socketActivity() const { return m_sharesConnection ? nullptr : m_activity; }

    // Nothing was sent, for the server does not always speak HTTP/2: the hop starts anew without it.
    bool startsAnew() const { return m_isRefused && !maybeSent(); }
    // Reads the outcome once the client has finished with the hop.
    std::variant<TransferResult, Redirection> conclude(CURLcode code);
    // The outcome of a hop that is given up because of `error`.
    TransferResult abandon(SessionError error);
    // Fills in what is known of the hop by now.
    void measure(HopMetrics& hop) const;
    // Whether a byte of the request was handed to the network.
    bool maybeSent() const { return m_attempts > 0 && handedOver() > m_sentToProxy; }

  private:
    struct Verdict {
        std::optional<TrustFailure> failure;
    };
    struct Callbacks;

    void setUpHandle();
    void setConnection();
    void setReceiver();
    void setFields();
    void setMethodAndBody();
    bool onHeadComplete();
    bool onBody(std::string_view bytes);
    bool refuseBody(ContentDecoder::Status status);
    void onProgress(std::uint64_t sent);
    bool endsWithConnection() const;
    bool isSecure() const;
    bool isOnUnfitConnection() const;
    std::optional<SessionError> failure(CURLcode code) const;
    SessionError::Phase phase() const;
    long handedOver() const;
    bool fail(std::string_view why);
    HTTPURLResponse response() const;
    HTTPURLResponse takeResponse();
    bool hasBody() const;
    std::size_t bodySize() const;
    std::string host() const { return m_options.request.url->host().value_or(""); }

    TransferOptions m_options;
    ClientHandle m_handle;
    FieldList m_fields;
    std::array<char, CURL_ERROR_SIZE> m_detail{};
    std::shared_ptr<Activity> m_activity = std::make_shared<Activity>();
    std::shared_ptr<Verdict> m_verdict;  // of the handshake that this transfer started, if any

    const std::chrono::system_clock::time_point m_begun = std::chrono::system_clock::now();
    std::chrono::system_clock::time_point m_leftQueue = m_begun;  // the client's own, for a connection
    bool m_queued = true;
    std::chrono::steady_clock::time_point m_deadline;
    bool m_sharesConnection = false;  // HTTP/2: what the socket receives may belong to other transfers
    SessionError::Phase m_phase = SessionError::Phase::lookingUpName;
    std::chrono::system_clock::time_point m_securingSince;
    int m_attempts = 0;
    long m_sentToProxy = 0;  // in front of the request
    bool m_replayRefused = false;
    bool m_isRefused = false;
    std::size_t m_bodyOffset = 0;
    std::uint64_t m_bytesSent = 0;

    ResponseHead m_head;
    std::unique_ptr<RedirectDecision> m_redirect;  // only for a redirect that is not delivered
    std::optional<ContentDecoder> m_decoder;
    std::size_t m_received = 0;
    std::string m_body;
    bool m_peerClosedCleanly = false;
    std::optional<SessionError> m_error;  // ours, found while the hop ran
};

}  // namespace torvel
