#include "TorvelTesting/ScriptedServer.h"

#include <cstdlib>
#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

namespace torvel::testing {

std::string ReceivedRequest::field(std::string_view name) const {
    for (std::size_t line = 0; line != std::string::npos; line = head.find("\r\n", line)) {
        if (line != 0) line += 2;
        if (strncasecmp(head.c_str() + line, name.data(), name.size()) == 0 &&
            head[line + name.size()] == ':') {
            const std::size_t value = head.find_first_not_of(" ", line + name.size() + 1);
            return head.substr(value, head.find("\r\n", value) - value);
        }
    }
    return "(none)";
}

std::string response(std::string_view statusLine, std::string_view body, std::string_view fields) {
    return "HTTP/1.1 " + std::string(statusLine) + "\r\nContent-Length: " + std::to_string(body.size()) +
           "\r\n" + std::string(fields) + "\r\n" + std::string(body);
}

ScriptedServer::ScriptedServer(std::vector<Script> scripts)
    : m_scripts(std::move(scripts)), m_listener(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* const plain = reinterpret_cast<sockaddr*>(&address);
    if (bind(m_listener, plain, size) != 0 || listen(m_listener, 512) != 0 || pipe(m_end) != 0)
        throw std::runtime_error("no loopback server");
    getsockname(m_listener, plain, &size);
    m_port = ntohs(address.sin_port);
    m_acceptor = std::thread([this] { accept(); });
}

ScriptedServer::~ScriptedServer() {
    close(m_end[1]);
    m_acceptor.join();
    for (std::thread& peer : m_peers) peer.join();
    close(m_end[0]);
    close(m_listener);
}

ScriptedServer::Script ScriptedServer::answering(std::string bytes) {
    return [bytes = std::move(bytes)](Peer& peer) {
        while (peer.answer(bytes)) {
        }
    };
}

std::string ScriptedServer::url(std::string_view path, std::string_view host) const {
    return "http://" + std::string(host) + ":" + std::to_string(m_port) + std::string(path);
}

std::vector<ReceivedRequest> ScriptedServer::requests() const {
    const std::lock_guard lock(m_mutex);
    return m_requests;
}

std::size_t ScriptedServer::connections() const {
    const std::lock_guard lock(m_mutex);
    return m_peers.size();
}

namespace {

// False when the server ends first.
bool waitReadable(int fd, int end) {
    pollfd asked[2] = {{fd, POLLIN, 0}, {end, POLLIN, 0}};
    poll(asked, 2, -1);
    return asked[1].revents == 0;
}

}  // namespace

void ScriptedServer::accept() {
    while (waitReadable(m_listener, m_end[0])) {
        const int fd = accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(m_mutex);
        const std::size_t connection = m_peers.size();
        m_peers.emplace_back([this, fd, connection] { serve(fd, connection); });
    }
}

void ScriptedServer::serve(int fd, std::size_t connection) {
    Peer peer;
    peer.m_server = this;
    peer.m_fd = fd;
    peer.m_connection = connection;
    m_scripts[std::min(connection, m_scripts.size() - 1)](peer);
    if (peer.m_fd >= 0) {
        // Unread bytes would turn the close into a reset.
        shutdown(peer.m_fd, SHUT_WR);
        char rest[4096];
        while (waitReadable(peer.m_fd, m_end[0]) && recv(peer.m_fd, rest, sizeof rest, 0) > 0) {
        }
        close(peer.m_fd);
    }
}

bool ScriptedServer::Peer::receive() {
    const auto fill = [this](std::size_t atLeast) {
        char bytes[65536];
        while (m_buffer.size() < atLeast) {
            if (!waitReadable(m_fd, m_server->m_end[0])) return false;
            const ssize_t count = recv(m_fd, bytes, sizeof bytes, 0);
            if (count <= 0) return false;
            m_buffer.append(bytes, static_cast<std::size_t>(count));
        }
        return true;
    };
    std::size_t end = std::string::npos;
    while ((end = m_buffer.find("\r\n\r\n")) == std::string::npos)
        if (!fill(m_buffer.size() + 1)) return false;
    ReceivedRequest request{m_buffer.substr(0, end + 4), {}, m_connection};
    m_buffer.erase(0, end + 4);
    const std::size_t length = std::strtoul(request.field("Content-Length").c_str(), nullptr, 10);
    if (!fill(length)) return false;
    request.body = m_buffer.substr(0, length);
    m_buffer.erase(0, length);
    const std::lock_guard lock(m_server->m_mutex);
    m_server->m_requests.push_back(std::move(request));
    return true;
}

void ScriptedServer::Peer::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (count <= 0) return;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
}

bool ScriptedServer::Peer::answer(std::string_view bytes) {
    if (!receive()) return false;
    send(bytes);
    return true;
}

void ScriptedServer::Peer::pause(int milliseconds) {
    pollfd end{m_server->m_end[0], POLLIN, 0};
    poll(&end, 1, milliseconds);
}

void ScriptedServer::Peer::stall() {
    char rest[4096];
    while (waitReadable(m_fd, m_server->m_end[0]) && recv(m_fd, rest, sizeof rest, 0) > 0) {
    }
}

void ScriptedServer::Peer::reset() {
    const linger abort{1, 0};
    setsockopt(m_fd, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
    close(m_fd);
    m_fd = -1;
}

}  // namespace torvel::testing
