#pragma once

#include "TorvelPlatform/uikit/qt/TextMeasure.h"

#include <string_view>

namespace torvel {

// The height in points of a text that is broken into lines of at most a width, as boundingSize() gives it.
// Main thread, as that.
inline double height(std::string_view text, double withConstrainedWidth, const UIFont& font) {
    return boundingSize(text, font, withConstrainedWidth).height;
}

// The width in points of a text that breaks at line feeds alone. What the height is fixed to does not
// matter. Main thread.
inline double width(std::string_view text, double /*withConstraintedHeight*/, const UIFont& font) {
    return boundingSize(text, font).width;
}

}  // namespace torvel
