#pragma once  // internal

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/uikit/Bitmap.h"

#include <QImage>
#include <optional>

namespace torvel {

// What one image has at most.
inline constexpr qint64 mostPixels = 32'000'000;

struct DecodedImage {
    Bitmap bitmap;
    ImageOrientation orientation;
};

// See UIImage::fromData().
std::optional<DecodedImage> decodeImage(const Data& data);
// See UIImage::pngData() and jpegData(); of the bitmap as it is stored.
std::optional<Data> encodePNG(const Bitmap& bitmap);
std::optional<Data> encodeJPEG(const Bitmap& bitmap, double quality);

// A copy of the toolkit's image; it must not be null.
Bitmap toBitmap(const QImage& image);

}  // namespace torvel
