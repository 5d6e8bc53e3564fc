#pragma once

#include <optional>

namespace torvel {

// How a host shows a screen.
enum class LaunchModes : int { Push = 0, Modal = 1, Add = 2 };

// The mode of a raw value; absent for any other number. Any thread.
constexpr std::optional<LaunchModes> launchModes(int rawValue) {
    if (rawValue < 0 || rawValue > 2) return std::nullopt;
    return static_cast<LaunchModes>(rawValue);
}

}  // namespace torvel
