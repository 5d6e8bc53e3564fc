#pragma once

#include <atomic>
#include <chrono>

namespace torvel {

// What the library takes for the current date, in its log and where a card's expiry is judged. Any thread.
class WallClock {
  public:
    // A moment.
    using Date = std::chrono::system_clock::time_point;

    // The system's date, unless another one is fixed.
    static Date now() {
        const Date fixed = s_fixed.load(std::memory_order_relaxed);
        return fixed == running ? std::chrono::system_clock::now() : fixed;
    }

    // Stops the clock at a date, for tests, or lets it run again.
    static void fix(Date date) { s_fixed.store(date, std::memory_order_relaxed); }
    static void run() { fix(running); }

  private:
    static constexpr Date running = Date::min();
    static inline std::atomic<Date> s_fixed{running};
};

}  // namespace torvel
