#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <string>

namespace torvel {

// Why a file could not be used: a sentence for a log, with the path and the system's reason.
struct FileError {
    std::string localizedDescription;  // the sentence
};

// The whole content of a file. Any thread.
Outcome<Data, FileError> readFile(const std::string& path);

}  // namespace torvel
