#pragma once

#include <string>

namespace torvel {

// A random identifier (RFC 4122, version 4) of 122 bits from the kernel's generator, as the platform writes
// it: 36 characters, "E621E1F8-C36C-495A-93FC-0C247A3E6E5F". Any thread.
std::string randomUUIDString();

}  // namespace torvel
