#pragma once  // internal

#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/StringsTable.h"
#include "TorvelPlatform/foundation/Text.h"

#include <mutex>

namespace torvel {

struct Bundle::State {
    std::filesystem::path directory;
    std::string identifier;
    std::string languageFolder;  // "fr.lproj", in the directory

    // What has been looked for, found or not.
    mutable std::mutex mutex;
    mutable ByText<std::optional<StringsTable>> tables;
    mutable ByText<std::optional<Bundle>> languages;
};

}  // namespace torvel
