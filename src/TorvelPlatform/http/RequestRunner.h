#pragma once  // internal

#include <memory>

namespace torvel {

struct SessionTask;

// What carries a session's requests out: its thread, or what stands in for the network. Any thread.
class RequestRunner {
  public:
    virtual ~RequestRunner() = default;

    virtual void submit(std::shared_ptr<SessionTask> task) = 0;
    // Looks through its requests and gives up those that were cancelled.
    virtual void sweep() = 0;
    // There are no requests any more, nor will there be.
    virtual void stop() = 0;
};

}  // namespace torvel
