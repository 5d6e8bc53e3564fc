#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// A queue of work that runs one item at a time, in the order of posting.
//
// The main queue belongs to the thread that drains it (the host's main thread). It never starts a thread:
// the host calls run(), or drain() whenever wakeFd() becomes readable in a loop of its own (Qt, GLib, epoll).
// Every other queue owns one thread, named after the last part of the label. A queue must outlive whoever
// may still post to it. An exception that leaves an item ends the process (std::terminate).
class DispatchQueue {
  public:
    // An item: runs once, on the queue's thread.
    using Work = std::function<void()>;

    // The main queue; lives as long as the process.
    static DispatchQueue& main();
    // A new serial queue with a thread of its own. Its destructor runs what was posted, then joins; inside
    // one of its own items it cannot wait, so the thread finishes the rest by itself.
    explicit DispatchQueue(std::string label);
    ~DispatchQueue();
    DispatchQueue(const DispatchQueue&) = delete;
    DispatchQueue& operator=(const DispatchQueue&) = delete;

    // As given, for logs and debuggers.
    const std::string& label() const;

    // Posts work; never runs it before returning. Any thread, also from inside work of the same queue.
    void async(Work work);
    // Posts several items with one wake-up, in order.
    void async(std::vector<Work> batch);

    // --- The main queue only; on another queue these end the process. ---

    // Runs what has been posted so far (items posted meanwhile wait for the next call), without blocking.
    // Returns how many items ran. Not re-entrant: a nested call returns 0.
    std::size_t drain();
    // Runs items as they come until stop() is called, from any thread or from an item: what was posted
    // before stop() still runs. Neither run() nor runUntil() may be called from inside an item.
    void run();
    void stop();
    // Runs items as they come until `done` is true (asked after each batch) or the time is up; returns
    // whether `done` held.
    bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);
    // A descriptor that is readable while items wait. Owned by the queue: poll it, do not read it.
    int wakeFd() const;

  private:
    struct State;
    explicit DispatchQueue(std::shared_ptr<State> state);
    std::shared_ptr<State> m_state;  // shared with the queue's thread
};

}  // namespace torvel
