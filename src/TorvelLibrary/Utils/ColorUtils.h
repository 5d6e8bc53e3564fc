#pragma once

#include "TorvelLibrary/Utils/ColorDAO.h"
#include "TorvelPlatform/foundation/URL.h"
#include "TorvelPlatform/uikit/UIColor.h"

#include <optional>
#include <string_view>

namespace torvel {

// The colour theme of the process: the file "ColorTheme.plist" of the library's bundle, replaced as a whole
// by the one of the main bundle. For the main thread.
class ColorUtils {
  public:
    // The one instance; the first call loads the themes. A file that is missing, cannot be read or is no
    // theme is logged as an error and otherwise ignored. Files are not looked at again.
    static ColorUtils& sharedInstance();

    ColorUtils(const ColorUtils&) = delete;
    ColorUtils& operator=(const ColorUtils&) = delete;

    // The theme in force; absent when no file gave one. A host assigns it to change it at run time.
    std::optional<ColorDAO> theme;

  private:
    ColorUtils();
    void loadDefaultTheme();
    void loadAppTheme();
    void setThemeFromPlist(const URL& file);
};

// The same as UIColor::hexString().
inline UIColor getUIColor(std::string_view hexString) { return UIColor::hexString(hexString); }

}  // namespace torvel
