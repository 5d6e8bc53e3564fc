#pragma once

#include "TorvelPlatform/foundation/Data.h"

namespace torvel {

// The SHA-256 digest of bytes (FIPS 180-4), 32 bytes. Any thread.
Data sha256(const Data& bytes);

}  // namespace torvel
