#pragma once

#include "TorvelPlatform/dispatch/DispatchQueue.h"

#include <cstddef>

namespace torvel::testing {

// The main queue stepped by hand: nothing of it runs unless the test says so. Call from the main thread,
// outside of work that the queue runs.
struct MainQueue {
    // Runs what waits at this moment; what that posts waits for the next step. Returns how many ran.
    static std::size_t step() { return DispatchQueue::main().drain(); }

    // Steps until nothing waits, at most `steps` times. Returns whether nothing does.
    static bool settle(int steps = 1000) {
        while (steps-- > 0)
            if (step() == 0) return true;
        return false;
    }
};

}  // namespace torvel::testing
