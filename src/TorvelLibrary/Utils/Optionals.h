#pragma once

#include "TorvelPlatform/foundation/WallClock.h"

#include <chrono>
#include <concepts>
#include <cstdint>
#include <iterator>
#include <optional>
#include <ranges>
#include <string>

namespace torvel {

// --- An optional value, or what stands for an absent one. Any thread. ---

// The empty text.
inline std::string safelyUnwrap(std::optional<std::string> text) { return std::move(text).value_or(""); }

// Zero.
template <class T>
requires(std::integral<T> || std::floating_point<T>) T safelyUnwrap(std::optional<T> number) {
    return number.value_or(T{});
}

// The current instant.
inline std::chrono::system_clock::time_point safelyUnwrap(
    std::optional<std::chrono::system_clock::time_point> date) {
    return date ? *date : WallClock::now();
}

// A copy of the element at an index, negative ones included; no value outside the array.
template <std::ranges::random_access_range Array>
std::optional<std::ranges::range_value_t<Array>> safeIndex(const Array& array, std::int64_t index) {
    if (index < 0 || index >= std::ranges::ssize(array)) return std::nullopt;
    return std::ranges::begin(array)[index];
}

}  // namespace torvel
