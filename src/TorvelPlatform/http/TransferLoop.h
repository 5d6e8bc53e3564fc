#pragma once  // internal

#include "TorvelPlatform/http/Curl.h"
#include "TorvelPlatform/http/FileDescriptor.h"
#include "TorvelPlatform/http/Transfer.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>

#include <sys/epoll.h>

namespace torvel {

// Drives transfers over one pool of connections with epoll, so that a turn costs what happens in it, however
// many requests hang. Belongs to one thread; only wake() may be called from others.
class TransferLoop {
  public:
    using Clock = std::chrono::steady_clock;
    using Finished = std::function<void(Transfer&, CURLcode)>;

    explicit TransferLoop(std::size_t maximumConnectionsPerHost);
    ~TransferLoop();
    TransferLoop(const TransferLoop&) = delete;
    TransferLoop& operator=(const TransferLoop&) = delete;

    // False when the loop could not be made: no descriptors left.
    bool usable() const { return m_multi && m_epoll && m_wake; }

    // Starts a transfer, which stays where it is until remove(). False when the client refuses it.
    bool add(Transfer& transfer);
    void remove(Transfer& transfer);

    // Waits for bytes, timers, `deadline` or wake(), and moves what can move.
    void turn(std::optional<Clock::time_point> deadline);
    // Moves what needs no waiting for; hands over each transfer that has ended.
    void collect(const Finished& finished);

    // Ends the wait of the current or next turn.
    void wake() const;

  private:
    struct Watch {
        std::uint32_t registered = 0;  // what epoll was told
        std::uint32_t wanted = 0;      // what the client waits for
        bool closingIsKnown = false;   // opened by our callback, so ours also hears of its end
        std::shared_ptr<Activity> activity;
    };
    struct Callbacks;

    void want(curl_socket_t socket, std::uint32_t events, const Transfer* transfer);
    void reconcile(curl_socket_t socket, Watch& watch);
    void serve(const epoll_event& event);
    int waitTime(std::optional<Clock::time_point> deadline) const;

    FileDescriptor m_epoll;
    FileDescriptor m_wake;
    std::unordered_map<curl_socket_t, Watch> m_watches;
    std::optional<Clock::time_point> m_timer;
    MultiHandle m_multi;  // last: its end still closes sockets
};

}  // namespace torvel
