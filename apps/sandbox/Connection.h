#pragma once  // internal

#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include <openssl/ssl.h>

namespace torvel::sandbox {

// One accepted connection, TLS or plain, with blocking input and output. It belongs to the thread that serves
// it; only interrupt() may be called from another. Having the socket in hand is what lets the sandbox reset,
// cut and drip at will.
class Connection {
  public:
    enum class Ending {
        orderly,  // TLS close_notify, then FIN
        cut,      // FIN alone, as an attacker truncating TLS would
        reset,    // RST
    };

    // Owns the socket. `tls` is null for plain http.
    Connection(int socket, SSL_CTX* tls);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // The TLS handshake; true at once on a plain connection.
    bool open();

    // Bytes read, 0 at the peer's end, -1 on failure or when ended.
    std::ptrdiff_t read(char* buffer, std::size_t size);

    // All of it, or false.
    bool write(std::string_view bytes);

    // Waits for `limit` (for ever without one). True when that time passed, false as soon as the peer has
    // gone or the sandbox stops.
    bool wait(std::optional<std::chrono::milliseconds> limit);

    void end(Ending ending);
    bool ended() const { return m_socket < 0; }

    // Makes whatever the serving thread waits for fail. Any thread.
    void interrupt();

    // The bytes handed to read()'s caller since the last restart. At most `recordLimit` of them are kept;
    // `count` counts them all.
    struct Record {
        std::string bytes;
        std::size_t count = 0;
    };
    const Record& record() const { return m_record; }
    void restartRecord() { m_record = {}; }

    static constexpr std::size_t recordLimit = std::size_t{1} << 20;

  private:
    bool fill();

    int m_socket;
    std::mutex m_closing;  // between interrupt() and the close of the socket
    std::unique_ptr<SSL, decltype(&SSL_free)> m_tls;
    std::string m_buffer;
    std::size_t m_used = 0;
    Record m_record;
};

}  // namespace torvel::sandbox
