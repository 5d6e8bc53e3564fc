#include "TorvelPlatform/http/Transfer.h"

#include "TorvelPlatform/http/CookieJar.h"
#include "TorvelPlatform/http/HeaderText.h"
#include "TorvelPlatform/http/TransferError.h"
#include "TorvelPlatform/security/TLSServerTrust.h"

#include <algorithm>
#include <utility>

namespace torvel {
namespace {

using Kind = SessionError::Kind;
using Phase = SessionError::Phase;

const DefaultTrustEvaluator& defaultEvaluator() {
    static const DefaultTrustEvaluator& evaluator = *new DefaultTrustEvaluator;
    return evaluator;
}

// The TLS object of the hop's connection, while it has one.
void* tlsConnection(CURL* easy) {
    curl_tlssessioninfo* info = nullptr;
    if (curl_easy_getinfo(easy, CURLINFO_TLS_SSL_PTR, &info) != CURLE_OK || info == nullptr) return nullptr;
    return info->internals;
}

}  // namespace

// What the client calls back.
struct Transfer::Callbacks {
    static Transfer& of(void* transfer) { return *static_cast<Transfer*>(transfer); }

    static std::size_t header(char* bytes, std::size_t, std::size_t size, void* user) {
        Transfer& transfer = of(user);
        transfer.m_activity->last = std::chrono::steady_clock::now();
        transfer.m_phase = Phase::receiving;
        const bool wasComplete = transfer.m_head.complete();
        if (!transfer.m_head.addLine({bytes, size})) return transfer.fail(transfer.m_head.fault()) ? size : 0;
        if (!wasComplete && transfer.m_head.complete() && !transfer.onHeadComplete()) return 0;
        return size;
    }

    static std::size_t body(char* bytes, std::size_t, std::size_t size, void* user) {
        of(user).m_activity->last = std::chrono::steady_clock::now();
        return of(user).onBody({bytes, size}) ? size : CURL_WRITEFUNC_ERROR;
    }

    // A hop leaves the queue to look up a name, to open a socket, or with a kept-alive connection at hand.
    static void leaveQueue(Transfer& transfer) {
        if (!std::exchange(transfer.m_queued, false)) return;
        transfer.m_activity->last = std::chrono::steady_clock::now();
        transfer.m_leftQueue = std::chrono::system_clock::now();
    }

    static int beforeLookUp(void*, void*, void* user) {
        leaveQueue(of(user));
        return 0;
    }

    static int onSocket(void* user, curl_socket_t, curlsocktype) {
        leaveQueue(of(user));
        of(user).m_phase = Phase::connecting;
        return CURL_SOCKOPT_OK;
    }

    // Runs whenever the request is about to be sent. The client sends it a second time when a kept-alive
    // connection dies under it; that is refused, for the server may have acted on the first.
    static int beforeRequest(void* user, char*, char*, int, int) {
        Transfer& transfer = of(user);
        leaveQueue(transfer);
        transfer.m_phase = Phase::sending;
        transfer.m_activity->last = std::chrono::steady_clock::now();
        transfer.m_sharesConnection = agreedOnHTTP2(tlsConnection(transfer.easy()));
        if (transfer.m_sharesConnection)  // the socket, which made the handshake, may hold the former
            transfer.m_activity = std::make_shared<Activity>();
        if (++transfer.m_attempts == 1) transfer.m_sentToProxy = transfer.handedOver();
        transfer.m_replayRefused = transfer.m_attempts > 1 && transfer.maybeSent();
        transfer.m_isRefused = transfer.isOnUnfitConnection();
        return transfer.m_replayRefused || transfer.m_isRefused ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
    }

    // The context lives as long as the connection, which other requests use too: nothing of this transfer
    // but the shared verdict goes into the decision.
    static CURLcode tlsContext(CURL*, void* context, void* user) {
        Transfer& transfer = of(user);
        transfer.m_phase = Phase::securing;
        transfer.m_securingSince = std::chrono::system_clock::now();
        transfer.m_verdict = std::make_shared<Verdict>();
        auto decide = [manager = transfer.m_options.trustManager, host = transfer.host(),
                       verdict = transfer.m_verdict](SecTrust& trust) {
            const ServerTrustEvaluating* evaluator = manager ? manager->evaluator(host) : nullptr;
            if (evaluator == nullptr) evaluator = &defaultEvaluator();
            verdict->failure = evaluator->evaluate(trust, host);
            return !verdict->failure;
        };
        return installServerTrust(context, std::move(decide)) ? CURLE_OK : CURLE_ABORTED_BY_CALLBACK;
    }

    static std::size_t read(char* buffer, std::size_t, std::size_t size, void* user) {
        Transfer& transfer = of(user);
        const std::size_t count = transfer.m_options.form->read(transfer.m_bodyOffset, {buffer, size});
        transfer.m_bodyOffset += count;
        return count;
    }

    static int seek(void* user, curl_off_t offset, int) {
        of(user).m_bodyOffset = static_cast<std::size_t>(offset);
        return CURL_SEEKFUNC_OK;
    }

    static int progress(void* user, curl_off_t, curl_off_t, curl_off_t, curl_off_t sent) {
        of(user).onProgress(static_cast<std::uint64_t>(sent));
        return 0;
    }
};

Transfer::Transfer(ClientHandle handle, const TransferOptions& options)
    : m_options(options), m_handle(std::move(handle)), m_fields(options.request.headers) {
    if (!m_handle.used) setUpHandle();
    setConnection();
    setReceiver();
    setFields();
    if (!m_handle.used) setMethodAndBody();
}

std::chrono::steady_clock::time_point Transfer::renewDeadline(double idleLimit) {
    using Clock = std::chrono::steady_clock;
    const Clock::time_point last = m_queued ? Clock::now() : m_activity->last;
    m_deadline = last + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(idleLimit));
    return m_deadline;
}

// What every hop has in common.
void Transfer::setUpHandle() {
    CURL* const handle = easy();
    curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);  // a URL is sent as written
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);  // never wait for a name look-up that was given up
    curl_easy_setopt(handle, CURLOPT_SHARE, sharedCookieJar());
    curl_easy_setopt(handle, CURLOPT_COOKIEFILE, "");  // uses the jar, reads no file
    // Else the client searches the environment five times for every request.
    if (!m_options.mayUseProxy) curl_easy_setopt(handle, CURLOPT_NOPROXY, "*");
    curl_easy_setopt(handle, CURLOPT_HTTP_CONTENT_DECODING, 0L);
    curl_easy_setopt(handle, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);

    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, Callbacks::header);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, Callbacks::body);
    curl_easy_setopt(handle, CURLOPT_RESOLVER_START_FUNCTION, Callbacks::beforeLookUp);
    curl_easy_setopt(handle, CURLOPT_SOCKOPTFUNCTION, Callbacks::onSocket);
    curl_easy_setopt(handle, CURLOPT_PREREQFUNCTION, Callbacks::beforeRequest);
    curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, Callbacks::progress);

    // Our decision is the only judge: it knows the host's evaluator, and loads no store of the client's.
    curl_easy_setopt(handle, CURLOPT_SSL_CTX_FUNCTION, Callbacks::tlsContext);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(handle, CURLOPT_SSL_VERIFYHOST, 0L);
    curl_easy_setopt(handle, CURLOPT_CAINFO, nullptr);
    curl_easy_setopt(handle, CURLOPT_CAPATH, nullptr);
    curl_easy_setopt(handle, CURLOPT_SSL_SESSIONID_CACHE, 0L);  // a resumed handshake would skip the decision
}

void Transfer::setConnection() {
    CURL* const handle = easy();
    curl_easy_setopt(handle, CURLOPT_URL, m_options.request.url->absoluteString().c_str());
    // Waiting for a connection to share pays where HTTP/2 may be agreed on, in the handshake. Over plain http
    // it would wait for the first answer instead.
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION,
                     m_options.mayShare ? CURL_HTTP_VERSION_2TLS : CURL_HTTP_VERSION_1_1);
    curl_easy_setopt(handle, CURLOPT_PIPEWAIT, m_options.mayShare ? 1L : 0L);
    // Beside HTTP/2 connections to a host the client also puts a hop on a busy HTTP/1.1 connection, and the
    // answers of the two get mixed up; it forgets as well that the host shares any. It keeps its connections
    // by host and address scope. On anything but link-local addresses a scope has no effect.
    curl_easy_setopt(handle, CURLOPT_ADDRESS_SCOPE, m_options.keepsApart ? 1L : 0L);
    curl_easy_setopt(handle, CURLOPT_FRESH_CONNECT, m_options.freshConnection ? 1L : 0L);
    // The client counts whole seconds and still uses a connection in the last one.
    curl_easy_setopt(handle, CURLOPT_MAXAGE_CONN, m_options.maximumIdleAge - 1);
}

// What the client tells of the hop goes here.
void Transfer::setReceiver() {
    curl_easy_setopt(easy(), CURLOPT_ERRORBUFFER, m_detail.data());
    for (const CURLoption receiver :
         {CURLOPT_HEADERDATA, CURLOPT_WRITEDATA, CURLOPT_RESOLVER_START_DATA, CURLOPT_SOCKOPTDATA,
          CURLOPT_PREREQDATA, CURLOPT_XFERINFODATA, CURLOPT_SSL_CTX_DATA})
        curl_easy_setopt(easy(), receiver, this);
}

void Transfer::setFields() {
    // Joined with the jar's cookies into one field.
    const auto cookie = m_options.request.headers.value("Cookie");
    curl_easy_setopt(easy(), CURLOPT_COOKIE, cookie ? cookie->c_str() : nullptr);
    curl_easy_setopt(easy(), CURLOPT_HTTPHEADER, m_fields.first());
}

void Transfer::setMethodAndBody() {
    const URLRequest& request = m_options.request;
    const std::string& method = request.httpMethod;
    // RFC 9110, 8.6: these announce even the absence of content.
    const bool announcesLength = method == "POST" || method == "PUT" || method == "PATCH";
    if (method == "HEAD") {
        curl_easy_setopt(easy(), CURLOPT_NOBODY, 1L);
    } else if (method != "GET") {
        curl_easy_setopt(easy(), CURLOPT_CUSTOMREQUEST, method.c_str());
    }
    if (!hasBody() && !announcesLength) return;

    curl_easy_setopt(easy(), CURLOPT_POST, 1L);
    curl_easy_setopt(easy(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(bodySize()));
    if (m_options.form != nullptr) {
        curl_easy_setopt(easy(), CURLOPT_READFUNCTION, Callbacks::read);
        curl_easy_setopt(easy(), CURLOPT_READDATA, this);
        curl_easy_setopt(easy(), CURLOPT_SEEKFUNCTION, Callbacks::seek);
        curl_easy_setopt(easy(), CURLOPT_SEEKDATA, this);
    } else {
        curl_easy_setopt(easy(), CURLOPT_POSTFIELDS,
                         request.httpBody ? request.httpBody->raw().data() : "");  // not copied
    }
    if (bodySize() > 0) curl_easy_setopt(easy(), CURLOPT_NOPROGRESS, 0L);
}

std::size_t Transfer::bodySize() const {
    if (m_options.form != nullptr) return m_options.form->size();
    return m_options.request.httpBody ? m_options.request.httpBody->size() : 0;
}

bool Transfer::onHeadComplete() {
    const URLRequest& request = m_options.request;
    if (m_head.statusCode() / 100 == 3) {
        if (auto decision = decideRedirect(request, hasBody(), response(), m_options.sessionHeaders))
            m_redirect = std::make_unique<RedirectDecision>(std::move(*decision));
    }
    if (request.httpMethod == "HEAD") return true;

    m_decoder.emplace(m_head.headers().value("Content-Encoding").value_or(""));
    const std::uint64_t announced = m_head.contentLength().value_or(0);
    if (announced > m_options.maximumResponseBytes) return fail("it is larger than allowed");
    // Two framings contradict each other; whatever follows on such a connection is not to be trusted.
    if (m_head.chunked() && m_head.headers().contains("Content-Length"))
        curl_easy_setopt(easy(), CURLOPT_FORBID_REUSE, 1L);
    // Progress calls go on to the very end, where alone the closing of the connection can be judged.
    if (endsWithConnection()) curl_easy_setopt(easy(), CURLOPT_NOPROGRESS, 0L);
    constexpr std::uint64_t mostReserved = std::uint64_t{64} * 1024 * 1024;
    m_body.reserve(static_cast<std::size_t>(std::min(announced, mostReserved)));
    return true;
}

bool Transfer::endsWithConnection() const {
    return !m_head.multiplexed() && !m_head.chunked() && !m_head.contentLength() &&
           m_head.statusCode() != 204 && m_head.statusCode() != 304 && isSecure();
}

// The hop was to share a connection, and this is an HTTP/1.1 one: for a used handle, or with another hop on
// it, which the client does not rule out.
bool Transfer::isOnUnfitConnection() const {
    long made = 0;
    curl_easy_getinfo(easy(), CURLINFO_NUM_CONNECTS, &made);
    return m_options.mayShare && !m_sharesConnection && (m_handle.used || made == 0);
}

bool Transfer::isSecure() const {
    return equalsIgnoringCase(m_options.request.url->scheme().value_or(""), "https");
}

bool Transfer::onBody(std::string_view bytes) {
    m_received += bytes.size();
    if (m_received > m_options.maximumResponseBytes) return fail("it is larger than allowed");
    if (m_redirect || !m_decoder) return true;  // nobody reads it
    if (!m_decoder->supported()) return fail("its content encoding is unknown");
    if (m_decoder->isIdentity()) {
        m_body.append(bytes);
        return true;
    }
    const ContentDecoder::Status status = m_decoder->decode(bytes, m_body, m_options.maximumResponseBytes);
    return status == ContentDecoder::Status::ok || refuseBody(status);
}

bool Transfer::refuseBody(ContentDecoder::Status status) {
    return fail(status == ContentDecoder::Status::tooLarge ? "it is larger than allowed once decompressed"
                                                           : "its content encoding is damaged");
}

void Transfer::onProgress(std::uint64_t sent) {
    if (sent != m_bytesSent) m_activity->last = std::chrono::steady_clock::now();
    m_bytesSent = sent;
    if (m_options.progress != nullptr) m_options.progress->sent(sent, bodySize());
    if (m_head.complete() && endsWithConnection())
        m_peerClosedCleanly = peerClosedCleanly(tlsConnection(easy()));
}

// False, for the callbacks to return.
bool Transfer::fail(std::string_view why) {
    m_error = {Kind::badServerResponse,
               "The answer from " + host() + " is not valid: " + std::string(why) + ".", std::nullopt};
    return false;
}

std::optional<SessionError> Transfer::failure(CURLcode code) const {
    if (m_verdict && m_verdict->failure && code != CURLE_OK)
        return SessionError{Kind::serverTrustEvaluationFailed, m_verdict->failure->description,
                            m_verdict->failure};
    if (m_error) return m_error;
    if (m_replayRefused) {
        return SessionError{Kind::connectionLost,
                            "The connection to " + host() +
                                " was lost before an answer came; the request is not sent a second time.",
                            std::nullopt};
    }
    if (code != CURLE_OK) {
        long systemError = 0;
        curl_easy_getinfo(easy(), CURLINFO_OS_ERRNO, &systemError);
        return transferError(code, host(), m_detail.data(), systemError);
    }
    if (!m_head.complete()) return transferError(CURLE_GOT_NOTHING, host(), "it ends inside its head", 0);
    const bool hasAnswerBytes = m_decoder.has_value() && m_received > 0;
    if (hasAnswerBytes && endsWithConnection() && !m_peerClosedCleanly)
        return transferError(CURLE_PARTIAL_FILE, host(), "it was cut off", 0);
    if (hasAnswerBytes && !m_decoder->ended()) {
        return SessionError{Kind::badServerResponse,
                            "The answer from " + host() + " is not valid: its content encoding ends early.",
                            std::nullopt};
    }
    return std::nullopt;
}

std::variant<TransferResult, Redirection> Transfer::conclude(CURLcode code) {
    // The redirect's own body is of no interest, so its faults are none.
    if (m_redirect) {
        if (auto* next = std::get_if<Redirection>(m_redirect.get())) return std::move(*next);
        return TransferResult{{}, {}, std::get<SessionError>(std::move(*m_redirect))};
    }
    std::optional<SessionError> error = failure(code);
    if (error) return abandon(std::move(*error));
    return TransferResult{takeResponse(), std::move(m_body), std::nullopt};
}

Phase Transfer::phase() const {
    if (m_phase != Phase::sending) return m_phase;
    curl_off_t sent = 0;
    curl_easy_getinfo(easy(), CURLINFO_SIZE_UPLOAD_T, &sent);
    return maybeSent() && static_cast<std::size_t>(sent) >= bodySize() ? Phase::waiting : Phase::sending;
}

long Transfer::handedOver() const {
    long bytes = 0;
    curl_easy_getinfo(easy(), CURLINFO_REQUEST_SIZE, &bytes);
    return bytes;
}

TransferResult Transfer::abandon(SessionError error) {
    if (error.kind == Kind::timedOut) error.phase = phase();
    TransferResult result{std::nullopt, std::move(m_body), std::move(error)};
    if (m_head.complete() && !m_redirect) result.response = takeResponse();
    return result;
}

HTTPURLResponse Transfer::takeResponse() {
    return {*m_options.request.url, m_head.statusCode(), m_head.takeHeaders()};
}

HTTPURLResponse Transfer::response() const {
    return {*m_options.request.url, m_head.statusCode(), m_head.headers()};
}

bool Transfer::hasBody() const { return m_options.form != nullptr || m_options.request.httpBody.has_value(); }

}  // namespace torvel
