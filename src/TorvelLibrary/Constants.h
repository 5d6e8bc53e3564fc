#pragma once

#include "TorvelPlatform/foundation/Bundle.h"

#include <string_view>

namespace torvel {

// What the library finds once and then shares. Any thread.
class Constants {
  public:
    // The library's own resources, found on the first use and then kept.
    static const Bundle& sdkBundle();

    // What the library looks for in bundles, by name and by type.
    static constexpr std::string_view endpointTable = "EndpointsConfig";       // a property list
    static constexpr std::string_view colorTheme = "ColorTheme";               // a property list
    static constexpr std::string_view configurationsTable = "Configurations";  // a strings table
    static constexpr std::string_view placeholderImage = "noImage";            // of the library's own bundle
    static constexpr std::string_view propertyListType = "plist";              // of tables and themes
    static constexpr std::string_view certificateType = "der";  // of pins and the envelope's key
    static constexpr std::string_view fontType = "ttf";         // of the font cache's files
};

// No members: a type that hosts name.
class NetworkConstants {};

}  // namespace torvel
