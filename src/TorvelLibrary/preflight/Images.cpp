// The images that interface files ask for, and the one that stands in for missing ones.
#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/preflight/InterfaceFile.h"
#include "TorvelPlatform/uikit/AssetCatalog.h"

#include <algorithm>

namespace torvel::preflight {
namespace {

bool hasImage(const Bundle& bundle, std::string_view name) {
    constexpr std::string_view types[] = {"", "png", "jpg", "jpeg"};
    return assetFolder(bundle, name, "imageset") || std::ranges::any_of(types, [&](std::string_view type) {
               return bundle.path(name, type).has_value();
           });
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
            if (!hasImage(host.bundle, name))
                findings.error("missing-image", {file.name, line, name},
                               {"the bundle has no such image", "the placeholder is shown in its place",
                                "add " + name + ".png, or an image set of that name in an asset catalogue"});
        }
    }
    if (!files.empty() && !hasImage(Bundle::library(), Constants::placeholderImage))
        findings.error(
            "no-placeholder", {.key = std::string(Constants::placeholderImage)},
            {"the library's bundle, " + Bundle::library().directory().string() + ", has no placeholder",
             "the process stops at the first image that is missing",
             "install the library's resources as a whole"});
    return std::move(findings).finish(counted(files.size(), "interface file") + ", " +
                                      counted(asked, "image"));
}

}  // namespace torvel::preflight
