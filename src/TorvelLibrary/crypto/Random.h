#pragma once

#include <cstdint>

namespace torvel {

// Random numbers from the system, for texts and keys.
struct Random {
    // A value in 0 ..< upperBound, every one exactly as likely, from a generator fit for keys; 0 for an upper
    // bound of 0. A bound below 0 or above 4294967295 stops the process. Any thread; a forked child draws
    // values of its own.
    static std::int64_t generate(std::int64_t upperBound);
};

}  // namespace torvel
