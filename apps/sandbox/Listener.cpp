#include "sandbox/Listener.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

namespace torvel::sandbox {

namespace {

bool bindLoopback(int socket, std::uint16_t port) {
    const int on = 1;
    setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 &&
           ::listen(socket, SOMAXCONN) == 0;
}

std::uint16_t portOf(int socket) {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.sin_port);
}

}  // namespace

Outcome<std::unique_ptr<Listener>, std::string> Listener::start(std::uint16_t port, SSL_CTX* tls,
                                                                Service service) {
    const int socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (socket < 0 || !bindLoopback(socket, port)) {
        std::string error =
            "cannot listen on 127.0.0.1:" + std::to_string(port) + ": " + std::strerror(errno);
        if (socket >= 0) ::close(socket);
        return error;
    }
    return std::unique_ptr<Listener>(new Listener(socket, portOf(socket), tls, std::move(service)));
}

Listener::Listener(int socket, std::uint16_t port, SSL_CTX* tls, Service service)
    : m_socket(socket), m_port(port), m_tls(tls), m_service(std::move(service)) {
    m_accepting = std::thread(&Listener::accept, this);
}

Listener::~Listener() {
    ::shutdown(m_socket, SHUT_RDWR);  // wakes accept()
    m_accepting.join();
    for (Peer& peer : m_peers) peer.connection.interrupt();
    for (Peer& peer : m_peers) peer.thread.join();
    ::close(m_socket);
}

void Listener::accept() {
    while (true) {
        const int socket = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0 && (errno == EINTR || errno == ECONNABORTED)) continue;
        if (socket < 0) return;
        reap();
        Peer& peer = m_peers.emplace_back(socket, m_tls);
        peer.thread = std::thread(&Listener::serve, this, std::ref(peer));
    }
}

void Listener::serve(Peer& peer) {
    sigset_t brokenPipe;  // OpenSSL writes without MSG_NOSIGNAL; a peer that left must not end the process
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
    if (peer.connection.open()) m_service(peer.connection);
    peer.connection.end(Connection::Ending::orderly);
    peer.finished = true;
}

void Listener::reap() {
    m_peers.remove_if([](Peer& peer) {
        if (!peer.finished) return false;
        peer.thread.join();
        return true;
    });
}

}  // namespace torvel::sandbox
