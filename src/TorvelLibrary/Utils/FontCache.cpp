#include "TorvelLibrary/Utils/FontCache.h"

#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"

#include <array>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {
namespace {

// --- Base fonts ---

// Where a face comes from, and the operation that the log names.
struct Base {
    std::string_view operation;
    std::string_view suffix;
    std::string_view fixedFile = {};  // asked first, whatever the language
};

#define TORVEL_BASE(WEIGHT, SUFFIX) constexpr Base base##WEIGHT{"get" #WEIGHT "Font()", SUFFIX};
TORVEL_FONT_WEIGHTS(TORVEL_BASE)
#undef TORVEL_BASE
#define TORVEL_POPPINS_BASE(WEIGHT, FILE, SUFFIX) \
    constexpr Base basePoppins##WEIGHT{"get" #WEIGHT "Poppin()", SUFFIX, FILE};
TORVEL_POPPINS_WEIGHTS(TORVEL_POPPINS_BASE)
#undef TORVEL_POPPINS_BASE

constexpr double baseSize = 17;

UIFont created(const std::string& name, const std::string& file) {
    const auto font = fontWithName(name, baseSize);
    if (!font) fatalError("The font " + name + " of " + file + ".ttf is not registered with the system");
    return *font;
}

std::string fileFor(std::string language, const Base& base) { return language.append(base.suffix); }

UIFont baseFont(const Base& base) {
    const std::string first = base.fixedFile.empty() ? fileFor(LocaleHelper::currentAppleLanguage(), base)
                                                     : std::string(base.fixedFile);
    for (const std::string& file : {first, fileFor(LocaleHelper::getDefaultAppLanguage(), base)}) {
        if (const auto name = Utils::loadFontName(file)) return created(*name, file);
        LogUtils::e(file + " font name is not found", {"Utils/FontCache", base.operation});
    }
    return systemFontOfSize(baseSize);
}

// --- Sizes ---

// A style's size in points on this screen.
template <auto size>
double pointSize() {
    const auto provider = TorvelLibrary::sharedInstance()->fontSizesDependency;
    return ScreenEnvironment::widthInPoints * (((*provider).*size)() / 375.0);
}

// Deliberate: the Headline style asks neither the facade nor its provider.
template <>
double pointSize<&FontSizesDependency::getHeadlineSize>() {
    return ScreenEnvironment::widthInPoints * 0.058666666666666666;
}

// --- The fonts made so far ---

enum Key : std::size_t {
#define TORVEL_STYLE_KEY(WEIGHT, STYLE, SIZE) WEIGHT##STYLE##Font,
#define TORVEL_WEIGHT_KEYS(WEIGHT, SUFFIX) TORVEL_FONT_STYLES(TORVEL_STYLE_KEY, WEIGHT)
#define TORVEL_POPPINS_KEY(WEIGHT, FILE, SUFFIX) Poppins##WEIGHT##Font,
    TORVEL_FONT_WEIGHTS(TORVEL_WEIGHT_KEYS) TORVEL_POPPINS_WEIGHTS(TORVEL_POPPINS_KEY) keyCount
#undef TORVEL_STYLE_KEY
#undef TORVEL_WEIGHT_KEYS
#undef TORVEL_POPPINS_KEY
};

using Fonts = std::array<std::optional<UIFont>, keyCount>;

// The fonts of the current language.
Fonts& cachedFonts() {
    expectMainThread("FontCache");
    static auto& cacheDict = *new std::map<std::string, Fonts>;
    static decltype(cacheDict.begin()) current = cacheDict.end();
    const std::string language = LocaleHelper::currentAppleLanguage();
    if (current == cacheDict.end() || current->first != language)
        current = cacheDict.try_emplace(language).first;
    return current->second;
}

const UIFont& cached(Key key, const Base& base, double (*size)()) {
    std::optional<UIFont>& font = cachedFonts()[key];
    if (!font) {
        const UIFont face = baseFont(base);
        font = face.withSize(size());
    }
    return *font;
}

// Deliberate: RegularSmall12 takes the Medium face, all others that of their own weight. Hosts' screens are
// laid out for it.
constexpr const Base& baseOf(Key key, const Base& own) {
    return key == RegularSmall12Font ? baseMedium : own;
}

}  // namespace

#define TORVEL_STYLE_GETTER(WEIGHT, STYLE, SIZE)                                              \
    const UIFont& FontCache::get##WEIGHT##STYLE##Font() {                                     \
        constexpr Key key = WEIGHT##STYLE##Font;                                              \
        return cached(key, baseOf(key, base##WEIGHT), pointSize<&FontSizesDependency::SIZE>); \
    }
#define TORVEL_WEIGHT_GETTERS(WEIGHT, SUFFIX)                    \
    TORVEL_FONT_STYLES(TORVEL_STYLE_GETTER, WEIGHT)              \
    UIFont FontCache::get##WEIGHT##FontCustomSize(double size) { \
        return baseFont(base##WEIGHT).withSize(size);            \
    }
#define TORVEL_POPPINS_GETTERS(WEIGHT, FILE, SUFFIX)                  \
    const UIFont& FontCache::get##WEIGHT##PoppinFont() {              \
        return cached(Poppins##WEIGHT##Font, basePoppins##WEIGHT,     \
                      pointSize<&FontSizesDependency::getTitleSize>); \
    }                                                                 \
    UIFont FontCache::getPoppin##WEIGHT##CustomSize(double size) {    \
        return get##WEIGHT##PoppinFont().withSize(size);              \
    }
TORVEL_FONT_WEIGHTS(TORVEL_WEIGHT_GETTERS)
TORVEL_POPPINS_WEIGHTS(TORVEL_POPPINS_GETTERS)
#undef TORVEL_STYLE_GETTER
#undef TORVEL_WEIGHT_GETTERS
#undef TORVEL_POPPINS_GETTERS

}  // namespace torvel
