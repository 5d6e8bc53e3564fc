#include "sandbox/Connection.h"

#include <algorithm>
#include <cerrno>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace torvel::sandbox {

Connection::Connection(int socket, SSL_CTX* tls)
    : m_socket(socket), m_tls(tls ? SSL_new(tls) : nullptr, SSL_free) {
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (m_tls) SSL_set_fd(m_tls.get(), socket);
}

Connection::~Connection() { end(Ending::cut); }

bool Connection::open() { return !m_tls || SSL_accept(m_tls.get()) == 1; }

bool Connection::fill() {
    m_used = 0;
    m_buffer.resize(16384);
    const std::ptrdiff_t got = m_tls ? SSL_read(m_tls.get(), m_buffer.data(), 16384)
                                     : ::recv(m_socket, m_buffer.data(), m_buffer.size(), 0);
    m_buffer.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
    return got > 0;
}

std::ptrdiff_t Connection::read(char* buffer, std::size_t size) {
    if (ended()) return -1;
    if (m_used == m_buffer.size() && !fill()) return 0;
    const std::size_t count = std::min(size, m_buffer.size() - m_used);
    std::copy_n(m_buffer.data() + m_used, count, buffer);
    m_record.bytes.append(buffer, std::min(count, recordLimit - m_record.bytes.size()));
    m_record.count += count;
    m_used += count;
    return static_cast<std::ptrdiff_t>(count);
}

bool Connection::write(std::string_view bytes) {
    while (!bytes.empty() && !ended()) {
        const int chunk = static_cast<int>(std::min<std::size_t>(bytes.size(), 1 << 20));
        const std::ptrdiff_t sent =
            m_tls ? SSL_write(m_tls.get(), bytes.data(), chunk)
                  : ::send(m_socket, bytes.data(), static_cast<std::size_t>(chunk), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return !ended();
}

bool Connection::wait(std::optional<std::chrono::milliseconds> limit) {
    pollfd peer{m_socket, POLLRDHUP, 0};
    const int milliseconds = limit ? static_cast<int>(limit->count()) : -1;
    int ready = 0;
    do ready = ::poll(&peer, 1, milliseconds);
    while (ready < 0 && errno == EINTR);
    return ready == 0;
}

void Connection::end(Ending ending) {
    if (ended()) return;
    if (m_tls && ending == Ending::orderly) SSL_shutdown(m_tls.get());
    const std::lock_guard lock(m_closing);
    if (ending == Ending::reset) {
        const linger drop{1, 0};
        setsockopt(m_socket, SOL_SOCKET, SO_LINGER, &drop, sizeof drop);
    }
    ::close(m_socket);
    m_socket = -1;
}

void Connection::interrupt() {
    const std::lock_guard lock(m_closing);
    if (m_socket >= 0) ::shutdown(m_socket, SHUT_RDWR);
}

}  // namespace torvel::sandbox
