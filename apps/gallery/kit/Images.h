#pragma once

#include "TorvelPlatform/uikit/qt/UIImage.h"

#include <QImage>

namespace torvel::gallery {

// What was drawn with the toolkit, as an image of the library's. Its format is ARGB32.
inline UIImage toUIImage(const QImage& drawn, double scale) {
    const auto* const pixels = reinterpret_cast<const std::uint32_t*>(drawn.constBits());
    return UIImage(Bitmap{drawn.width(), drawn.height(), {pixels, pixels + drawn.width() * drawn.height()}},
                   scale);
}

}  // namespace torvel::gallery
