#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <string>

namespace torvel {

// Why a font file has no name to give.
enum class FontFileError {
    noProvider,  // the font reader could not be started
    noFont,      // the bytes are no font
    noName,      // the font does not say its PostScript name
};

// The PostScript name of the font in a file's bytes, the first one's in a collection ("Poppins-SemiBold").
// Any thread.
Outcome<std::string, FontFileError> postScriptName(const Data& fontFile);

}  // namespace torvel
