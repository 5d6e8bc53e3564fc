#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace torvel::testing {

// One request as it arrived.
struct ReceivedRequest {
    std::string head;  // the request line and fields, ending with the empty line
    std::string body;
    std::size_t connection;  // the first is 0

    std::string method() const { return head.substr(0, head.find(' ')); }
    // The value of a header field; "(none)" when there is none.
    std::string field(std::string_view name) const;
};

// A server on 127.0.0.1 that does with each connection exactly what its script says, and keeps what arrived.
class ScriptedServer {
  public:
    class Peer {
      public:
        // Reads one whole request. False when the client closed instead.
        bool receive();
        // Sends bytes as they are.
        void send(std::string_view bytes);
        // Receives a request and answers it.
        bool answer(std::string_view bytes);
        // Waits for so long, at most until the server ends: the gap of a slow sender.
        void pause(int milliseconds);
        // Waits until the server ends or the client closes.
        void stall();
        // Ends the connection by a reset instead of an orderly close.
        void reset();

      private:
        friend class ScriptedServer;
        ScriptedServer* m_server;
        int m_fd;
        std::size_t m_connection;
        std::string m_buffer;
    };
    using Script = std::function<void(Peer&)>;

    // Connection i runs script i, any further one the last.
    explicit ScriptedServer(std::vector<Script> scripts);
    explicit ScriptedServer(Script script) : ScriptedServer(std::vector<Script>{std::move(script)}) {}
    // Every request of every connection gets this answer.
    static Script answering(std::string bytes);
    ~ScriptedServer();

    std::string url(std::string_view path = "/", std::string_view host = "127.0.0.1") const;
    std::vector<ReceivedRequest> requests() const;
    std::size_t connections() const;

  private:
    void accept();
    void serve(int fd, std::size_t connection);

    std::vector<Script> m_scripts;
    int m_listener;
    int m_end[2];  // a pipe whose closing ends all waiting
    int m_port;
    mutable std::mutex m_mutex;
    std::vector<ReceivedRequest> m_requests;
    std::vector<std::thread> m_peers;
    std::thread m_acceptor;
};

// A complete answer with a content length; `fields` are whole lines with their ends.
std::string response(std::string_view statusLine, std::string_view body, std::string_view fields = "");

}  // namespace torvel::testing
