#pragma once

#include <optional>
#include <string>

namespace torvel::gallery {

class Gallery;
class Window;

// Writes every screen and every pane as PNG files into a folder, which is made when absent: in English and in
// Arabic, some in French and in the dark theme. The error is one line.
std::optional<std::string> writeShots(Gallery& gallery, Window& window, const std::string& folder);

}  // namespace torvel::gallery
