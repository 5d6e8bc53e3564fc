#pragma once

#include <string_view>

namespace torvel {

// Names the calling thread for debuggers and process lists: the label's part behind its last ".", cut to
// the 15 bytes that the system keeps.
void nameCurrentThread(std::string_view label);

}  // namespace torvel
