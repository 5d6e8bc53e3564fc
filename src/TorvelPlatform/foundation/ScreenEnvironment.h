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

    // How the device is held; the numbers are the platform's.
    enum class Orientation {
        unknown = 0,
        portrait = 1,
        portraitUpsideDown = 2,
        landscapeLeft = 3,
        landscapeRight = 4,
        faceUp = 5,
        faceDown = 6,
    };

    // The screen's width in points.
    static inline std::atomic<double> widthInPoints{375.0};
    // How many pixels make a point.
    static inline std::atomic<double> scale{1.0};
    // How it is held now.
    static inline std::atomic<Orientation> orientation{Orientation::unknown};
    // The direction of views that do not say their own.
    static inline std::atomic<Direction> direction{Direction::leftToRight};
    // Which of their appearances named colours and images take.
    static inline std::atomic<Style> style{Style::light};
};

}  // namespace torvel
