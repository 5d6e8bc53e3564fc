#pragma once

#include <string_view>

namespace torvel {

// The platform's system log: one line on standard error, whatever the library's own logging is set to. Any
// thread.
void NSLog(std::string_view message);

}  // namespace torvel
