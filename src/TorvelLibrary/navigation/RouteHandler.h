#pragma once

#include "TorvelLibrary/Utils/PayloadDictionary.h"

#include <functional>
#include <optional>
#include <string>

namespace torvel {

// What performs a navigation. The router always hands it a present payload. Runs where AppRouter is used: on
// the main thread.
using RouteCallback = std::function<void(const std::optional<PayloadDictionary>& payload)>;

// A registered navigation target.
struct RouteHandler {
    std::string path;            // exactly as given: neither normalised nor case-folded
    RouteCallback routeHandler;  // what goes there
    bool isAuthRequired;         // whether it waits for an authenticated user
};

}  // namespace torvel
