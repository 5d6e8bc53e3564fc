#include "TorvelPlatform/uikit/Bitmap.h"

namespace torvel {
namespace {

// Where the pixels of a viewed row are stored: the first one's index, the way to the next one and to the
// first one of the next row.
struct Walk {
    std::ptrdiff_t start, step, row;
};

Walk walkOf(const Bitmap& bitmap, ImageOrientation orientation) {
    const std::ptrdiff_t width = bitmap.width;
    const std::ptrdiff_t last = width * bitmap.height - 1;
    const std::ptrdiff_t right = width - 1, bottom = last - right;
    const Walk walks[] = {{0, 1, width},      {last, -1, -width},  {right, width, -1}, {bottom, -width, 1},
                          {right, -1, width}, {bottom, 1, -width}, {0, width, 1},      {last, -width, -1}};
    return walks[static_cast<int>(orientation)];
}

}  // namespace

Bitmap upright(const Bitmap& bitmap, ImageOrientation orientation) {
    const bool turns = turnsSides(orientation);
    Bitmap result{turns ? bitmap.height : bitmap.width, turns ? bitmap.width : bitmap.height, {}};
    result.pixels.reserve(bitmap.pixels.size());
    const Walk walk = walkOf(bitmap, orientation);
    for (std::ptrdiff_t y = 0; y < result.height; ++y)
        for (std::ptrdiff_t x = 0; x < result.width; ++x)
            result.pixels.push_back(
                bitmap.pixels[static_cast<std::size_t>(walk.start + y * walk.row + x * walk.step)]);
    return result;
}

}  // namespace torvel
