#pragma once

#include "TorvelPlatform/uikit/Bitmap.h"
#include "TorvelPlatform/uikit/UIColor.h"

namespace torvel {

// The bitmap in the hue and saturation of a colour, with its own luminosity and shape: the bitmap over
// black, the colour over it in the blend mode "color" (W3C Compositing and Blending Level 1, 9.4), and that
// through the bitmap's alpha. Within 1 of 255 of the formula a channel. Components beyond 0 to 1 count as 0
// or 1. Any thread.
Bitmap tinted(const Bitmap& bitmap, const UIColor::Components& color);

// The bitmap's silhouette in a colour. Any thread.
Bitmap silhouette(const Bitmap& bitmap, const UIColor::Components& color);

}  // namespace torvel
