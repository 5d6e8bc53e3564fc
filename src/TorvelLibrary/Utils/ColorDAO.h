#pragma once

#include "TorvelPlatform/foundation/Outcome.h"
#include "TorvelPlatform/foundation/PropertyList.h"

#include <span>
#include <string>
#include <string_view>

namespace torvel {

// Every colour of a theme: its field, its key in a theme file, and what it is when the key is missing. The
// two keys with "Cirlce" are deliberate: existing theme files carry them so.
// clang-format off
#define TORVEL_COLORS(COLOR)                                                                \
    COLOR(primaryColor, "PrimaryColor", "0387D1")                                           \
    COLOR(onPrimaryColor, "OnPrimaryColor", "FFFFFF")                                       \
    COLOR(regularTextColor, "RegularTextColor", "1B1C21")                                   \
    COLOR(secondaryTextColor, "SecondaryTextColor", "76777A")                               \
    COLOR(backgroundColor, "BackgroundColor", "BABABC")                                     \
    COLOR(surfaceColor, "SurfaceColor", "F4F7F9")                                           \
    COLOR(secondaryBackgroundColor, "SecondaryBackgroundColor", "1C96DA")                   \
    COLOR(circlePrimaryColor, "CirclePrimaryColor", "905DC9")                               \
    COLOR(circleTopGradientColor, "CircleTopGradientColor", "8F5CC9")                       \
    COLOR(circleBottomGradientColor, "CircleBottomGradientColor", "B088D1")                 \
    COLOR(circleAcceptColor, "CircleAcceptColor", "5CD1A0")                                 \
    COLOR(circleRejectColor, "CircleRejectColor", "CC4339")                                 \
    COLOR(circleSecondaryBackgroundColor, "CircleSecondaryBackgroundColor", "F7F5FA")       \
    COLOR(circleSecondaryTextColor, "CircleSecondaryTextColor", "AFAFB1")                   \
    COLOR(circleTextFieldBGColor, "CirlceTextFieldBGColor", "F2F6F8")                       \
    COLOR(circleDisabledColor, "CirlceDisabledColor", "76777A")                             \
    COLOR(circlePendingStatusColor, "CirclePendingStatusColor", "FAC353")                   \
    COLOR(circleLightBackgroundColor, "CircleLightBackgroundColor", "F9F8FB")
// clang-format on

// The colours of a theme as hexadecimal texts, which UIColor::hexString() reads; those of TORVEL_COLORS, the
// defaults at first. A value; threads may share one that none changes.
class ColorDAO {
  public:
    // The record in a theme file's dictionary; keys that are not there leave the default, other keys count
    // for nothing. An error when there is no dictionary or when a value under a key is no text.
    static Outcome<ColorDAO, PropertyListError> from(const PropertyList& theme);

    // A colour of the theme, for whoever handles them all.
    struct Field {
        std::string_view key;          // in a theme file
        std::string_view fallback;     // without the key
        std::string ColorDAO::*color;  // the member
    };
    // All colours, in the order of the table.
    static std::span<const Field> fields();

#define TORVEL_COLOR(NAME, KEY, FALLBACK) std::string NAME = FALLBACK;
    // The colour under the key of the same name, six hexadecimal digits.
    TORVEL_COLORS(TORVEL_COLOR)
#undef TORVEL_COLOR
};

}  // namespace torvel
