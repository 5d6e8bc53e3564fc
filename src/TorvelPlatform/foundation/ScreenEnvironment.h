#pragma once

#include <atomic>

namespace torvel {

// What the core must know of the screen. Without a screen the width is the design width and the writing
// direction the one that the last language change set. Each value may be read and written from any thread.
struct ScreenEnvironment {
    // Which way lines of text run.
    enum class Direction { leftToRight, rightToLeft };

    // Which appearance a screen has.
    enum class Style { light, dark };

    // The screen's width in points.
    static inline std::atomic<double> widthInPoints{375.0};
    // The direction of views that do not say their own.
    static inline std::atomic<Direction> direction{Direction::leftToRight};
    // Which of their appearances named colours and images take.
    static inline std::atomic<Style> style{Style::light};
};

}  // namespace torvel
