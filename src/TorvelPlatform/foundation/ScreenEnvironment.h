#pragma once

#include <atomic>

namespace torvel {

// What the core must know of the screen. Without a screen the width is the design width and the writing
// direction the one that the last language change set. Each value may be read and written from any thread.
struct ScreenEnvironment {
    enum class Direction { leftToRight, rightToLeft };

    static inline std::atomic<double> widthInPoints{375.0};
    static inline std::atomic<Direction> direction{Direction::leftToRight};
};

}  // namespace torvel
