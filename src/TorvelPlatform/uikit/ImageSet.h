#pragma once

#include "TorvelPlatform/foundation/ScreenEnvironment.h"

#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// A file of an image set.
struct ImageSetFile {
    std::string name;  // a file of the set's folder, without a path
    double scale = 1;  // how many pixels make a point
};

// The file that the "Contents.json" of an image set gives for any device, else for phones, in an
// appearance, the light one where it has no dark one, and of those the least one that is fine enough for a
// screen of `scale` pixels a point, else the finest. Absent when the text is no image set or names no such
// file. Any thread.
std::optional<ImageSetFile> imageOfSet(std::string_view contents, ScreenEnvironment::Style style,
                                       double scale);

}  // namespace torvel
