#include "sandbox/Sandbox.h"

#include "sandbox/Envelope.h"
#include "sandbox/HttpExchange.h"
#include "sandbox/Listener.h"
#include "sandbox/Misbehaviour.h"
#include "sandbox/Wallet.h"

#include <deque>
#include <mutex>

#include <nlohmann/json.hpp>
#include <openssl/pem.h>
#include <openssl/ssl.h>

namespace torvel::sandbox {

namespace {

using Json = nlohmann::json;
using TlsContext = std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)>;
using Bio = std::unique_ptr<BIO, decltype(&BIO_free)>;

constexpr std::size_t exchangesKept = 64;
constexpr std::string_view misbehavePrefix = "/misbehave/";

Bio reading(const std::string& pem) {
    return Bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())), BIO_free);
}

// Null when the identity's texts are no certificate with its key.
TlsContext tlsContext(const SandboxIdentity& identity) {
    TlsContext context(SSL_CTX_new(TLS_server_method()), SSL_CTX_free);
    const std::unique_ptr<X509, decltype(&X509_free)> certificate(
        PEM_read_bio_X509(reading(identity.serverPem).get(), nullptr, nullptr, nullptr), X509_free);
    const std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> key(
        PEM_read_bio_PrivateKey(reading(identity.serverKeyPem).get(), nullptr, nullptr, nullptr),
        EVP_PKEY_free);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
    if (!certificate || !key || SSL_CTX_use_certificate(context.get(), certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), key.get()) != 1)
        return {nullptr, SSL_CTX_free};
    return context;
}

// The request as the story sees it, and how to seal the answer.
struct Opened {
    std::string plainText;
    std::string keyText;  // empty: the answer goes out unsealed
    EnvelopeForm form;
};

Outcome<Opened, EnvelopeError> open(const Call& call, const SandboxOptions& options) {
    const EnvelopeForm form = envelopeForm(options.flavour);
    const std::string& privateKey = options.identity->serverKeyPem;
    if (isRequestEnvelope(call.content)) {
        auto envelope = openRequestEnvelope(call.content, privateKey);
        if (!envelope) return envelope.error();
        return Opened{envelope.value().plainText, envelope.value().keyText, envelope.value().form};
    }
    if (const auto sealedKey = call.field("RequestKey")) {
        const auto key = openKey(*sealedKey, privateKey, "the header field RequestKey");
        if (!key) return key.error();
        return Opened{call.content, key.value().keyText, form};
    }
    return Opened{call.content, "", form};
}

Reply echo(const Call& call, const Opened& opened) {
    const std::string target = call.requestLine.substr(call.requestLine.find(' ') + 1);
    Json json{{"method", call.method},
              {"target", target.substr(0, target.rfind(' '))},
              {"fields", call.fields},
              {"body", opened.keyText.empty() ? call.body : opened.plainText},
              {"bodyBytes", call.bodyBytes}};
    return {200, json.dump(-1, ' ', false, Json::error_handler_t::replace)};
}

// An answer that ends the session must be readable without its key; an empty one has nothing to seal.
void seal(Reply& reply, const Opened& opened) {
    if (opened.keyText.empty() || reply.status == 401 || reply.body.empty()) return;
    if (auto sealed = sealResponse(reply.body, opened.keyText, opened.form)) {
        reply.body = std::move(*sealed);
        reply.type = "application/json";
    }
}

}  // namespace

struct Sandbox::State {
    explicit State(SandboxOptions given) : options(std::move(given)) {}

    Reply answer(const Call& call, Connection& connection);
    Reply answerOpened(const Call& call, Connection& connection, const Opened& opened, Exchange& exchange);
    std::size_t begin(const Exchange& exchange);
    void finish(std::size_t number, Exchange exchange);

    SandboxOptions options;  // with an identity
    TlsContext tls{nullptr, SSL_CTX_free};
    Wallet wallet;
    mutable std::mutex mutex;  // of the exchanges
    std::deque<Exchange> exchanges;
    std::size_t forgotten = 0;           // exchanges dropped from the front
    std::unique_ptr<Listener> listener;  // last: its threads use what stands above
};

Reply Sandbox::State::answer(const Call& call, Connection& connection) {
    Exchange exchange{call.requestLine, call.fields, call.body, call.bodyBytes, "", "", 0, "", ""};
    const auto opened = open(call, options);
    if (opened) {
        exchange.keyText = opened.value().keyText;
        exchange.plainText = opened.value().plainText;
    }
    const std::size_t number = begin(exchange);
    Reply reply = opened ? answerOpened(call, connection, opened.value(), exchange)
                         : errorReply(400, opened.error().message, "BAD_ENVELOPE");
    exchange.status = reply.status;
    exchange.answer = reply.body;
    finish(number, std::move(exchange));
    return reply;
}

Reply Sandbox::State::answerOpened(const Call& call, Connection& connection, const Opened& opened,
                                   Exchange& exchange) {
    if (call.path.starts_with(misbehavePrefix))
        return misbehave(call.path.substr(misbehavePrefix.size()),
                         {call, connection, opened.form, opened.keyText});
    Reply reply = call.path == "/echo" ? echo(call, opened) : wallet.answer(call, opened.plainText);
    exchange.plainAnswer = reply.body;
    seal(reply, opened);
    return reply;
}

std::size_t Sandbox::State::begin(const Exchange& exchange) {
    const std::lock_guard lock(mutex);
    exchanges.push_back(exchange);
    if (exchanges.size() > exchangesKept) {
        exchanges.pop_front();
        ++forgotten;
    }
    return forgotten + exchanges.size() - 1;
}

void Sandbox::State::finish(std::size_t number, Exchange exchange) {
    const std::lock_guard lock(mutex);
    if (number >= forgotten) exchanges[number - forgotten] = std::move(exchange);
}

Outcome<std::unique_ptr<Sandbox>, std::string> Sandbox::start(SandboxOptions options) {
    if (!options.identity) options.identity = SandboxIdentity::make();
    auto state = std::make_unique<State>(std::move(options));
    if (state->options.tls) {
        state->tls = tlsContext(*state->options.identity);
        if (!state->tls) return std::string("the identity is no certificate with its private key, in PEM");
    }
    const auto answer = [raw = state.get()](const Call& call, Connection& connection) {
        return raw->answer(call, connection);
    };
    auto listener = Listener::start(state->options.port, state->tls.get(),
                                    [answer](Connection& connection) { serveRequests(connection, answer); });
    if (!listener) return listener.error();
    state->listener = std::move(listener.value());
    return std::unique_ptr<Sandbox>(new Sandbox(std::move(state)));
}

Sandbox::Sandbox(std::unique_ptr<State> state) : m_state(std::move(state)) {}

Sandbox::~Sandbox() = default;

std::uint16_t Sandbox::port() const { return m_state->listener->port(); }

std::string Sandbox::url() const {
    return (m_state->options.tls ? "https" : "http") + std::string("://127.0.0.1:") + std::to_string(port());
}

const SandboxIdentity& Sandbox::identity() const { return *m_state->options.identity; }

std::vector<Exchange> Sandbox::exchanges() const {
    const std::lock_guard lock(m_state->mutex);
    return {m_state->exchanges.begin(), m_state->exchanges.end()};
}

}  // namespace torvel::sandbox
