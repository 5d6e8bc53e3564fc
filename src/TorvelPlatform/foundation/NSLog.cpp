#include "TorvelPlatform/foundation/NSLog.h"

#include <iostream>
#include <string>

namespace torvel {

void NSLog(std::string_view message) { std::cerr << std::string(message) + "\n" << std::flush; }

}  // namespace torvel
