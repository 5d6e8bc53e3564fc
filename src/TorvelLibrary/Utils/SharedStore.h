#pragma once  // internal

#include "TorvelPlatform/defaults/SecureDefaults.h"

#include <optional>

namespace torvel {

// The shared store, whatever the default suite, with its key made if need be; absent when that failed.
std::optional<SecureDefaults> sharedStore();

}  // namespace torvel
