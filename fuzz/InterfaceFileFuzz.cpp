#include "Fuzz.h"
#include "TorvelLibrary/preflight/InterfaceFile.h"

#include <algorithm>

void fuzz(std::string_view bytes) {
    const auto lines = 1 + std::count(bytes.begin(), bytes.end(), '\n');
    const auto file = torvel::preflight::InterfaceFile::parse("fuzz.ui", bytes);
    for (const auto& items : {file.texts, file.images})
        for (const auto& [text, line] : items) mustHold(!text.empty() && line >= 1 && line <= lines);
}
