#pragma once

#include "TorvelPlatform/uikit/UIFont.h"

namespace torvel {

// Every text style, for one weight: its name and the operation of FontSizesDependency that sizes it.
// clang-format off
#define TORVEL_FONT_STYLES(STYLE, WEIGHT)               \
    STYLE(WEIGHT, Title16, getTitle16Size)              \
    STYLE(WEIGHT, SubTitle14, getSubTitle14Size)        \
    STYLE(WEIGHT, Smallest, getSmallestSize)            \
    STYLE(WEIGHT, Headline24, getHeadline24Size)        \
    STYLE(WEIGHT, Small12, getSmall12Size)              \
    STYLE(WEIGHT, Title, getTitleSize)                  \
    STYLE(WEIGHT, SubTitle, getSubTitleSize)            \
    STYLE(WEIGHT, Small, getSmallSize)                  \
    STYLE(WEIGHT, Heading, getHeadingSize)              \
    STYLE(WEIGHT, Heading20, getHeading20Size)          \
    STYLE(WEIGHT, Headline, getHeadlineSize)            \
    STYLE(WEIGHT, Headline22, getHeadline22Size)        \
    STYLE(WEIGHT, BigHeading, getBigHeadingSize)        \
    STYLE(WEIGHT, BigHeadline, getBigHeadlineSize)

// Every weight of the text styles, with the end of its font files' names.
#define TORVEL_FONT_WEIGHTS(WEIGHT)     \
    WEIGHT(Light, "_light")             \
    WEIGHT(Medium, "_medium")           \
    WEIGHT(Regular, "_regular")         \
    WEIGHT(Bold, "_bold")               \
    WEIGHT(SemiBold, "_semi_bold")

// Every weight of the Poppins family: its font file, which is also the face's PostScript name, and the end of
// the names of the font files that stand in for it.
#define TORVEL_POPPINS_WEIGHTS(WEIGHT)                   \
    WEIGHT(Regular, "Poppins-Regular", "_regular")       \
    WEIGHT(Medium, "Poppins-Medium", "_medium")          \
    WEIGHT(Bold, "Poppins-Bold", "_bold")                \
    WEIGHT(SemiBold, "Poppins-SemiBold", "_semi_bold")
// clang-format on

// The application's fonts by weight and style: faces from the host's font files of the current language,
// sized for the width of the screen.
//
// A face is looked for in the file `<language><end of the weight>.ttf` of the main bundle, "en_light.ttf"
// for instance; a Poppins one in "Poppins-Regular.ttf" and so on. A file that gives no name is logged as an
// error, and the default language's file of that weight is asked, which may fail the same way; then it is
// the system's font. A face with a name that is not registered with the platform stops the process: the host
// ships a font and forgot to register it.
//
// A style's font is made once for each language and kept for the life of the process: later changes of the
// sizes or of the screen do not reach it. A change of language in this process gives other fonts from the
// next call on. For the main thread of a process that has its QApplication.
class FontCache {
  public:
#define TORVEL_STYLE_GETTER(WEIGHT, STYLE, SIZE) static const UIFont& get##WEIGHT##STYLE##Font();
#define TORVEL_WEIGHT_GETTERS(WEIGHT, SUFFIX)       \
    TORVEL_FONT_STYLES(TORVEL_STYLE_GETTER, WEIGHT) \
    static UIFont get##WEIGHT##FontCustomSize(double size);
#define TORVEL_POPPINS_GETTERS(WEIGHT, FILE, SUFFIX) \
    static const UIFont& get##WEIGHT##PoppinFont();  \
    static UIFont getPoppin##WEIGHT##CustomSize(double size);
    // get{Weight}{Style}Font(): the style's size in points, times the width of the screen over 375.
    // get{Weight}FontCustomSize(size): exactly that size in points; reads the font file at each call.
    TORVEL_FONT_WEIGHTS(TORVEL_WEIGHT_GETTERS)
    // get{Weight}PoppinFont(): Poppins in the size of the Title style.
    // getPoppin{Weight}CustomSize(size): the same in exactly that size in points.
    TORVEL_POPPINS_WEIGHTS(TORVEL_POPPINS_GETTERS)
#undef TORVEL_STYLE_GETTER
#undef TORVEL_WEIGHT_GETTERS
#undef TORVEL_POPPINS_GETTERS
};

}  // namespace torvel
