#pragma once

#include "TorvelPlatform/uikit/UIFont.h"

#include <optional>
#include <string_view>

namespace torvel {

// The size of a drawn text in points.
struct TextSize {
    double width;   // of the widest line
    double height;  // of all lines, with the face's line gap between them
};

// The size of a text in a font, exact and not rounded: proportional to the font's size. Lines break at line
// feeds and, with a width, between words, or inside a word that is wider than that. The empty text is one
// line of no width. A width of 0 or less is none, as on the platform. For the main thread of a process that
// has its QApplication.
TextSize boundingSize(std::string_view text, const UIFont& font, std::optional<double> width = {});

}  // namespace torvel
