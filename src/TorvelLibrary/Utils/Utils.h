#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/URL.h"

#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// Operations that host screens call without knowing which room a value lives in.
class Utils {
  public:
    // The bytes of a file; a failure is logged as an error and gives an absent result.
    static std::optional<Data> loadFileContents(const URL& url);

    // Text files in the host's Documents directory (UserDirectories), which the first write makes. A name is
    // a single path component, used as given; any other, or a text that is not UTF-8, is a failure. Writing
    // replaces a file of that name, not atomically; false when it failed.
    static bool writeFileToDocumentDirectory(std::string_view fileName, std::string_view text);
    // The empty text when the file cannot be read or is not UTF-8.
    static std::string readFileFromDocumentDirectory(std::string_view fileName);
    // False when there is no such file or it cannot be removed.
    static bool deleteFileFromDocumentDirectory(std::string_view fileName);
};

}  // namespace torvel
