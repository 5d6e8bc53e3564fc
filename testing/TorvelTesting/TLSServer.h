#pragma once

#include "TorvelTesting/Certificates.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace torvel::testing {

// A small HTTPS server on 127.0.0.1 that counts every byte of a request that reaches it.
class TLSServer {
  public:
    // Serves `leaf`, sending `others` behind it, and answers each request with `answer`.
    explicit TLSServer(Identity leaf, std::vector<Identity> others = {},
                       std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
    ~TLSServer();
    TLSServer(const TLSServer&) = delete;
    TLSServer& operator=(const TLSServer&) = delete;

    std::uint16_t port() const { return m_port; }
    // "https://<host>:<port>/"
    std::string url(const std::string& host) const;

    // What later connections are served.
    void serve(Identity leaf, std::vector<Identity> others = {});

    // Closes connections that offer HTTP/2 from now on, once they have agreed on it.
    void claimHTTP2() { m_claimsHTTP2 = true; }

    std::size_t requestBytes() const { return m_requestBytes; }  // after the handshake, of all connections
    std::size_t connections() const { return m_connections; }
    std::size_t requests() const { return m_requests; }

  private:
    void acceptLoop();
    void handle(int socket);

    std::string m_answer;
    int m_listener = -1;
    std::uint16_t m_port = 0;
    std::mutex m_mutex;  // guards the three below
    Identity m_leaf;
    std::vector<Identity> m_others;
    std::set<int> m_open;
    std::atomic<bool> m_claimsHTTP2{false};
    std::atomic<std::size_t> m_requestBytes{0};
    std::atomic<std::size_t> m_connections{0};
    std::atomic<std::size_t> m_requests{0};
    std::vector<std::thread> m_handlers;
    std::thread m_acceptor;
};

}  // namespace torvel::testing
