#pragma once

#include "TorvelPlatform/foundation/Data.h"

namespace torvel {

// Decoders make up what a file that is cut short lacks. Any thread.

// Whether a JPEG file (ITU T.81, annex B) reaches its end-of-image marker, after at most 100
// scans.
bool reachesJPEGEnd(const Data& file);
// Whether a GIF file (GIF89a) holds the whole of its first image.
bool reachesGIFImageEnd(const Data& file);

}  // namespace torvel
