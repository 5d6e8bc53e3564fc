#pragma once

#include "TorvelTesting/Certificates.h"

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <sys/types.h>

namespace torvel::testing {

// A TLS server that is not ours and what it keeps in `directory`. Both ends are loopback.
class ServerProcess {
  public:
    ServerProcess(const ServerProcess&) = delete;
    ServerProcess& operator=(const ServerProcess&) = delete;

    std::string url(const std::string& host, const std::string& path = "/") const {
        return "https://" + host + ":" + std::to_string(m_port) + path;
    }

  protected:
    explicit ServerProcess(std::filesystem::path directory) : m_directory(std::move(directory)) {}
    ~ServerProcess();

    std::filesystem::path write(const std::string& name, const std::string& content) const;
    // Runs the program; its standard input and output are m_input and m_output.
    void start(const std::vector<std::string>& arguments, int inheritedSocket = -1);
    // Sends the signal and waits for the process's end, once. What it printed can still be read.
    void end(int signal);

    std::filesystem::path m_directory;
    std::uint16_t m_port = 0;
    int m_input = -1;
    int m_output = -1;

  private:
    pid_t m_process = -1;
};

// `openssl s_server`, which sends `answer` once it has the head of a request (of HTTP/2: its preface) and
// shows every byte that reaches it.
class OpenSSLServer : public ServerProcess {
  public:
    OpenSSLServer(std::filesystem::path directory, const Identity& leaf,
                  const std::vector<Identity>& others = {}, const std::vector<std::string>& options = {},
                  std::string answer = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
    ~OpenSSLServer();

    // What the server printed, once it has ended its connection or received the request: handshake, the
    // client's extensions, and the bytes of the request.
    // With `awaited`: once it has printed that, or long enough has passed.
    std::string transcript(const char* awaited = nullptr);

  private:
    void pump();
    // What was printed up to now, once one of the endings is there.
    std::string printed(std::initializer_list<const char*> endings);

    std::string m_answer;
    std::string m_printed;
    std::mutex m_mutex;  // guards m_printed
    std::condition_variable m_changed;
    std::thread m_pump;
};

// nginx with HTTP/2, session tickets and keep-alive for 20 requests. `/away/HOST` redirects to the same
// server under that host name, `/once` closes its connection, `/slow` sends a byte a second.
class NginxServer : public ServerProcess {
  public:
    NginxServer(std::filesystem::path directory, const Identity& leaf,
                const std::vector<Identity>& others = {});

    // What later connections are served.
    void serve(const Identity& leaf, const std::vector<Identity>& others = {}) const;

    // Ends the server. A line a request: "GET /path HTTP/2.0 <host> <reused session: r, else .>".
    std::vector<std::string> requests();
};

}  // namespace torvel::testing
