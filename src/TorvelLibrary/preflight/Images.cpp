// The images that interface files ask for, and the one that stands in for missing ones.
#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/preflight/InterfaceFile.h"
#include "TorvelPlatform/uikit/AssetCatalog.h"

#include <filesystem>

namespace torvel::preflight {
namespace {

// The toolkit loads what an interface file names by itself: a file, from where the interface file is.
bool hasFile(const Host& host, const InterfaceFile& file, const std::string& image) {
    return Host::exists((host.bundle.directory() / file.name).parent_path() / image);
}

bool hasPlaceholder(const Bundle& library) {
    return assetFolder(library, Constants::placeholderImage, "imageset") ||
           library.path(Constants::placeholderImage, "png");
}

}  // namespace

PreflightSubject examineImages(const Host& host) {
    Findings findings("images");
    std::size_t asked = 0;
    const std::vector<InterfaceFile> files = interfaceFiles(host);
    for (const InterfaceFile& file : files) {
        if (!file.isOne)
            findings.error("not-an-interface", {file.name},
                           {"the file is no interface file", "the screen that it describes cannot be made",
                            "save it again with the designer"});
        for (const auto& [name, line] : file.images) {
            ++asked;
            if (!hasFile(host, file, name))
                findings.error("missing-image", {file.name, line, name},
                               {"there is no such file beside the interface file", "the view shows no image",
                                "add the file, or correct its name"});
        }
    }
    if (host.hasScreen() && !hasPlaceholder(Bundle::library()))
        findings.error(
            "no-placeholder", {.key = std::string(Constants::placeholderImage)},
            {"the library's bundle, " + Bundle::library().directory().string() + ", has no placeholder",
             "the process stops at the first image that is missing",
             "install the library's resources as a whole"});
    return std::move(findings).finish(counted(files.size(), "interface file") + ", " +
                                      counted(asked, "image"));
}

}  // namespace torvel::preflight
