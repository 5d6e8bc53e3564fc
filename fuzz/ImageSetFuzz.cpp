#include "Fuzz.h"
#include "TorvelPlatform/uikit/ImageSet.h"

using namespace torvel;

// An image set's description: whatever it says, the file is one of the set's own folder.
void fuzz(std::string_view bytes) {
    for (const auto style : {ScreenEnvironment::Style::light, ScreenEnvironment::Style::dark})
        for (const double scale : {1.0, 2.0, 3.5})
            if (const auto file = imageOfSet(bytes, style, scale))
                mustHold(!file->name.empty() && file->name.find('/') == file->name.npos && file->scale >= 1);
}
