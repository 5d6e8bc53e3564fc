#pragma once

#include "TorvelPlatform/foundation/Bundle.h"

#include <string_view>

namespace torvel {

// What the library finds once and then shares.
class Constants {
  public:
    // The library's own resources, found on the first use and then kept.
    static const Bundle& sdkBundle();

    // What the library looks for in bundles, by name and by type.
    static constexpr std::string_view endpointTable = "EndpointsConfig";
    static constexpr std::string_view colorTheme = "ColorTheme";
    static constexpr std::string_view configurationsTable = "Configurations";
    static constexpr std::string_view propertyListType = "plist";
    static constexpr std::string_view certificateType = "der";
    static constexpr std::string_view fontType = "ttf";
    static constexpr std::string_view placeholderImage = "noImage";  // of the library's bundle
};

// No members: a type that hosts name.
class NetworkConstants {};

}  // namespace torvel
