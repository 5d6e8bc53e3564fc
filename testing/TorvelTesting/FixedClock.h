#pragma once

#include "TorvelPlatform/foundation/WallClock.h"

namespace torvel::testing {

// Stops the library's clock at a date for as long as it lives, to move it by hand: the log's dates and the
// judgement of a card's expiry. Which century a year of two digits is of still follows the system's date.
class FixedClock {
  public:
    explicit FixedClock(std::chrono::sys_seconds date) { set(date); }
    ~FixedClock() { WallClock::run(); }
    FixedClock(const FixedClock&) = delete;
    FixedClock& operator=(const FixedClock&) = delete;

    static void set(std::chrono::sys_seconds date) { WallClock::fix(date); }
};

}  // namespace torvel::testing
