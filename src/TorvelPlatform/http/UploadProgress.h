#pragma once  // internal

#include "TorvelPlatform/dispatch/DispatchQueue.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>

namespace torvel {

// Reports how much of an upload was sent, on the caller's queue, with one post waiting there at most: a slow
// queue skips fractions instead of piling them up. Fractions never fall, and 1.0 is reported once.
class UploadProgress : public std::enable_shared_from_this<UploadProgress> {
  public:
    UploadProgress(DispatchQueue& queue, std::function<void(double)> handler)
        : m_queue(queue), m_handler(std::move(handler)) {}

    // The session's thread.
    void sent(std::uint64_t bytes, std::uint64_t ofTotal);

  private:
    void report();

    DispatchQueue& m_queue;
    std::function<void(double)> m_handler;
    std::atomic<double> m_latest{0.0};
    std::atomic<bool> m_posted{false};
    double m_reported = 0.0;  // the queue's
};

}  // namespace torvel
