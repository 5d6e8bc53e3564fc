#pragma once

#include "TorvelPlatform/foundation/Data.h"

namespace torvel {

/// Whether a JPEG file (ITU T.81, annex B) reaches its end-of-image marker. Decoders make up what a shorter
/// one lacks. Any thread.
bool reachesJPEGEnd(const Data& file);

}  // namespace torvel
