#pragma once

#include <string>
#include <string_view>

namespace torvel {

// The text without any occurrence of `part`: literal, left to right, what stands together afterwards is not
// looked at again. An empty `part` changes nothing.
std::string removingOccurrences(std::string_view text, std::string_view part);

}  // namespace torvel
