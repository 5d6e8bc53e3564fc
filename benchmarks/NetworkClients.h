#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

// The same requests by the library and by its peers. Every client keeps its connections from one run to the
// next and ends the program when an answer is not what it should be.
namespace torvel::bench {

// What is asked of a server.
struct Load {
    std::string url;
    std::size_t inFlight = 1;
    std::size_t connections = 6;  // as many as the library opens to a host
};

class Client {
  public:
    virtual ~Client() = default;
    // Sends `total` GET requests, at most load.inFlight at a time, and waits for the last answer.
    virtual void get(const Load& load, std::size_t total) = 0;
};

// One that can also leave requests unanswered.
class HoldingClient : public Client {
  public:
    // Sends `count` GET requests, all at a time, which hang until the server ends. Returns when `held`.
    virtual void hold(const Load& load, std::size_t count, const std::function<bool()>& held) = 0;
};

// Calls `send` `total` times, at most `inFlight` ahead of the calls of the continuation it is given, all on
// the main queue.
void sendInTurns(std::size_t total, std::size_t inFlight,
                 const std::function<void(std::function<void()> done)>& send);

// TorvelNetworkClient::getRequest, whole.
std::unique_ptr<HoldingClient> torvelClient();
// libcurl's multi interface, driven by curl_multi_perform and curl_multi_poll. `authority` is the file of the
// certificates to trust, as for the next two.
std::unique_ptr<HoldingClient> curlClient(const std::string& authority);
// QNetworkAccessManager with HTTP/1.1.
std::unique_ptr<Client> qtClient(const std::string& authority);
// cpp-httplib with a thread and a connection a request in flight.
std::unique_ptr<Client> httplibClient(const std::string& authority);

}  // namespace torvel::bench
