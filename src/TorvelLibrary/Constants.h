#pragma once

#include "TorvelPlatform/foundation/Bundle.h"

namespace torvel {

// What the library finds once and then shares.
class Constants {
  public:
    // The library's own resources, found on the first use and then kept.
    static const Bundle& sdkBundle();
};

// No members: a type that hosts name.
class NetworkConstants {};

}  // namespace torvel
