#pragma once

#include "TorvelPlatform/uikit/UIFont.h"

#include <optional>
#include <string>
#include <string_view>

class QFont;

namespace torvel {

// The faces that the platform knows: those of the system's font folders and those registered by the process.
// All of it is for the main thread of a process that has its QApplication.

// Makes the faces of a font file known to this process, as a host does with the files that it ships. Doing
// it twice changes nothing. False when it is no font file.
bool registerFont(const std::string& path);

// The face of a PostScript name at a size in points; absent when the platform knows no such face.
std::optional<UIFont> fontWithName(std::string_view fontName, double size);

// The platform's face for user interfaces, at a size in points.
UIFont systemFontOfSize(double size);

// The toolkit's font for drawing: the face without hinting, at the size, a point being one pixel whatever
// the screen's resolution. The toolkit draws whole pixels. A face that the platform does not know gives its
// default one.
QFont toQFont(const UIFont& font);

}  // namespace torvel
