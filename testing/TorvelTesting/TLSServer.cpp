#include "TorvelTesting/TLSServer.h"

#include <memory>
#include <stdexcept>

#include <arpa/inet.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

namespace torvel::testing {
namespace {

using ContextPtr = std::unique_ptr<SSL_CTX, decltype([](SSL_CTX* context) { SSL_CTX_free(context); })>;
using ConnectionPtr = std::unique_ptr<SSL, decltype([](SSL* ssl) { SSL_free(ssl); })>;
using BioPtr = std::unique_ptr<BIO, decltype([](BIO* bio) { BIO_free(bio); })>;

X509* certificateOf(const Identity& identity) {
    const std::string& pem = identity.certificatePem;
    const BioPtr bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
    return PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr);
}

ContextPtr contextFor(const Identity& leaf, const std::vector<Identity>& others) {
    ContextPtr context(SSL_CTX_new(TLS_server_method()));
    SSL_CTX_set_security_level(context.get(), 0);  // weak certificates are the client's to refuse
    X509* const certificate = certificateOf(leaf);
    SSL_CTX_use_certificate(context.get(), certificate);
    X509_free(certificate);
    const BioPtr bio(BIO_new_mem_buf(leaf.privateKeyPem.data(), static_cast<int>(leaf.privateKeyPem.size())));
    EVP_PKEY* const key = PEM_read_bio_PrivateKey(bio.get(), nullptr, nullptr, nullptr);
    SSL_CTX_use_PrivateKey(context.get(), key);
    EVP_PKEY_free(key);
    for (const Identity& other : others) SSL_CTX_add_extra_chain_cert(context.get(), certificateOf(other));
    return context;
}

int chooseHTTP2(SSL*, const unsigned char** chosen, unsigned char* size, const unsigned char* offered,
                unsigned offeredSize, void*) {
    for (unsigned at = 0; at < offeredSize; at += offered[at] + 1U) {
        *chosen = offered + at + 1;
        *size = offered[at];
        if (*size == 2 && (*chosen)[0] == 'h' && (*chosen)[1] == '2') return SSL_TLSEXT_ERR_OK;
    }
    return SSL_TLSEXT_ERR_NOACK;
}

}  // namespace

TLSServer::TLSServer(Identity leaf, std::vector<Identity> others, std::string answer)
    : m_answer(std::move(answer)), m_leaf(std::move(leaf)), m_others(std::move(others)) {
    m_listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(m_listener, reinterpret_cast<sockaddr*>(&address), size) != 0 ||
        ::listen(m_listener, 64) != 0 ||
        ::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) != 0)
        throw std::runtime_error("no loopback listener");
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { acceptLoop(); });
}

TLSServer::~TLSServer() {
    ::shutdown(m_listener, SHUT_RDWR);
    m_acceptor.join();
    ::close(m_listener);
    {
        const std::lock_guard lock(m_mutex);
        for (const int socket : m_open) ::shutdown(socket, SHUT_RDWR);
    }
    for (std::thread& handler : m_handlers) handler.join();
}

std::string TLSServer::url(const std::string& host) const {
    return "https://" + host + ":" + std::to_string(m_port) + "/";
}

void TLSServer::serve(Identity leaf, std::vector<Identity> others) {
    const std::lock_guard lock(m_mutex);
    m_leaf = std::move(leaf);
    m_others = std::move(others);
}

void TLSServer::acceptLoop() {
    for (int socket; (socket = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
        ++m_connections;
        {
            const std::lock_guard lock(m_mutex);
            m_open.insert(socket);
        }
        m_handlers.emplace_back([this, socket] {
            handle(socket);
            const std::lock_guard lock(m_mutex);
            m_open.erase(socket);
            ::close(socket);
        });
    }
}

void TLSServer::handle(int socket) {
    sigset_t pipe;  // a refused server writes into closed connections
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe, nullptr);
    ContextPtr context;
    {
        const std::lock_guard lock(m_mutex);
        context = contextFor(m_leaf, m_others);
    }
    if (m_claimsHTTP2) SSL_CTX_set_alpn_select_cb(context.get(), chooseHTTP2, nullptr);
    const ConnectionPtr connection(SSL_new(context.get()));
    SSL_set_fd(connection.get(), socket);
    if (SSL_accept(connection.get()) != 1) return;
    const unsigned char* protocol = nullptr;
    unsigned chosen = 0;
    SSL_get0_alpn_selected(connection.get(), &protocol, &chosen);
    if (chosen != 0) return;
    std::string head;
    char buffer[4096];
    for (int count; (count = SSL_read(connection.get(), buffer, sizeof buffer)) > 0;) {
        m_requestBytes += static_cast<std::size_t>(count);
        head.append(buffer, static_cast<std::size_t>(count));
        if (!head.ends_with("\r\n\r\n")) continue;
        head.clear();
        ++m_requests;
        SSL_write(connection.get(), m_answer.data(), static_cast<int>(m_answer.size()));
    }
}

}  // namespace torvel::testing
