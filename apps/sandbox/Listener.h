#pragma once  // internal

#include "TorvelPlatform/foundation/Outcome.h"
#include "sandbox/Connection.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace torvel::sandbox {

// Accepts connections on 127.0.0.1 and serves each on a thread of its own, so that hanging ones never starve
// the others. Its end interrupts every connection and joins every thread.
class Listener {
  public:
    using Service =
        std::function<void(Connection&)>;  // called once a connection, on that connection's thread

    // Port 0 lets the system choose. `tls` (null: plain) must outlive the listener. The error is one line.
    static Outcome<std::unique_ptr<Listener>, std::string> start(std::uint16_t port, SSL_CTX* tls,
                                                                 Service service);
    ~Listener();

    std::uint16_t port() const { return m_port; }

  private:
    struct Peer {
        Peer(int socket, SSL_CTX* tls) : connection(socket, tls) {}
        Connection connection;
        std::atomic<bool> finished = false;
        std::thread thread;
    };

    Listener(int socket, std::uint16_t port, SSL_CTX* tls, Service service);
    void accept();
    void serve(Peer& peer);
    void reap();

    const int m_socket;
    const std::uint16_t m_port;
    SSL_CTX* const m_tls;
    const Service m_service;
    std::list<Peer> m_peers;  // the accepting thread's, until it has ended
    std::thread m_accepting;
};

}  // namespace torvel::sandbox
