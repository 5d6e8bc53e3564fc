#include "TorvelLibrary/Utils/ColorUtils.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelPlatform/foundation/MainThread.h"

namespace torvel {
namespace {

constexpr std::string_view source = "Utils/ColorUtils";

Outcome<ColorDAO, PropertyListError> decodeTheme(const Data& bytes) {
    const auto list = PropertyList::parse(bytes);
    if (!list) return list.error();
    return ColorDAO::from(list.value());
}

}  // namespace

ColorUtils& ColorUtils::sharedInstance() {
    expectMainThread("ColorUtils");
    static auto& instance = *new ColorUtils;
    return instance;
}

// The application's theme replaces the library's whole: what it leaves out takes the built-in defaults.
ColorUtils::ColorUtils() {
    loadDefaultTheme();
    loadAppTheme();
}

void ColorUtils::loadDefaultTheme() {
    if (const auto file =
            getPathURLFromBundle(Constants::colorTheme, Constants::propertyListType, Bundle::library()))
        return setThemeFromPlist(*file);
    LogUtils::e("Default Color Theme plist Not Found In Framework", {source, 36, 23, "loadDefaultTheme()"});
}

void ColorUtils::loadAppTheme() {
    if (const auto file =
            getPathURLFromBundle(Constants::colorTheme, Constants::propertyListType, Bundle::main()))
        return setThemeFromPlist(*file);
    LogUtils::e("Default Color Theme plist Not Found In App", {source, 47, 23, "loadAppTheme()"});
}

void ColorUtils::setThemeFromPlist(const URL& file) {
    const std::optional<Data> bytes = Utils::loadFileContents(file);
    if (!bytes) return;
    auto decoded = decodeTheme(*bytes);
    if (decoded)
        theme = std::move(decoded).value();
    else
        LogUtils::e(decoded.error().description, {source, 63, 27, "setThemeFromPlist(_:)"});
}

}  // namespace torvel
