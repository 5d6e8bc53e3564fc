#pragma once

#include "BenchFiles.h"

#include <atomic>
#include <string>

#include <sys/types.h>

namespace torvel::bench {

// Puts the calling thread, and whoever it starts from now on, on one processor.
void runOnProcessor(unsigned processor);

// A child process that ends with this object.
class Child {
  public:
    explicit Child(pid_t pid) : m_pid(pid) {}
    ~Child();
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    // Processor time it has had, in seconds.
    double seconds() const;

  private:
    pid_t m_pid;
};

// nginx on 127.0.0.1, with certificates made for it: an answer of a few hundred bytes to everything. One
// worker, on the first processor.
class Nginx {
  public:
    // "ca.pem" and "server.der" of the folder are its authority's and its own certificate.
    explicit Nginx(const Folder& folder);
    std::string http() const { return "http://127.0.0.1:" + std::to_string(m_ports[0]); }
    std::string https() const { return "https://127.0.0.1:" + std::to_string(m_ports[1]); }  // HTTP/1.1 alone
    std::string http2() const { return "https://127.0.0.1:" + std::to_string(m_ports[2]); }

    double seconds() const { return m_process.seconds(); }

  private:
    int m_ports[3];
    Child m_process;
};

// Takes whole requests of any size and answers them with a word, but those for "/hang" never. A process of
// its own, on the first processor.
class SinkServer {
  public:
    SinkServer();
    std::string url() const { return "http://127.0.0.1:" + std::to_string(m_port); }
    // Requests for "/hang" so far.
    int hanging() const { return m_shared->load(); }
    double seconds() const { return m_process.seconds(); }

  private:
    void serve(int listener);

    std::atomic<int>* m_shared;
    int m_port;
    Child m_process;
};

}  // namespace torvel::bench
