#pragma once

#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/uikit/UIColor.h"

#include <optional>
#include <string_view>

namespace torvel {

// The colour that the "Contents.json" of a colour set gives for any device, else for phones, in an
// appearance, the light one where it has no dark one. Components are fractions ("0.5"), bytes ("128") or
// hexadecimal bytes ("0x80"), as texts or numbers; colour spaces sRGB, Display P3, grey and their extended
// forms. Absent when the text is no colour set or names no such colour. Any thread.
std::optional<UIColor> colorOfSet(std::string_view contents, ScreenEnvironment::Style style);

}  // namespace torvel
