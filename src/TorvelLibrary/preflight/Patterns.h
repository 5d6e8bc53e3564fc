#pragma once  // internal

#include <optional>
#include <string>

namespace torvel::preflight {

// A text on which the (valid) pattern backtracks without end; absent when none of a few dozen likely ones is.
std::optional<std::string> endlessProbe(const std::string& pattern);

}  // namespace torvel::preflight
