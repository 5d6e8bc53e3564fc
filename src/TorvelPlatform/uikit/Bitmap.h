#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace torvel {

// Pixels in rows from the top, each 0xAARRGGBB in sRGB with straight (not premultiplied) alpha, so that
// what is merely stored keeps every bit. A value.
struct Bitmap {
    int width;                          // in pixels, positive
    int height;                         // in pixels, positive
    std::vector<std::uint32_t> pixels;  // width * height of them

    // The same size and the same pixels.
    bool operator==(const Bitmap&) const = default;
};

// How a bitmap is to be turned for viewing; the numbers are the platform's. EXIF counts otherwise.
enum class ImageOrientation {
    up = 0,             // as it is stored (EXIF 1)
    down = 1,           // half a turn (EXIF 3)
    left = 2,           // a quarter turn counter-clockwise (EXIF 8)
    right = 3,          // a quarter turn clockwise (EXIF 6)
    upMirrored = 4,     // mirrored left to right (EXIF 2)
    downMirrored = 5,   // mirrored top to bottom (EXIF 4)
    leftMirrored = 6,   // mirrored left to right, then a quarter turn counter-clockwise (EXIF 5)
    rightMirrored = 7,  // mirrored left to right, then a quarter turn clockwise (EXIF 7)
};

// Whether width and height change places when a bitmap of this orientation is viewed.
constexpr bool turnsSides(ImageOrientation orientation) { return static_cast<int>(orientation) & 2; }

// The bitmap turned as its orientation wants it viewed. Any thread.
Bitmap upright(const Bitmap& bitmap, ImageOrientation orientation);

}  // namespace torvel
