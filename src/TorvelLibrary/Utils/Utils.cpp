#include "TorvelLibrary/Utils/Utils.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/uikit/FontFile.h"

namespace torvel {
namespace {

std::string_view describe(FontFileError error) {
    switch (error) {
        case FontFileError::noProvider:
            return "Could not create data provider";
        case FontFileError::noFont:
            return "Could not load font";
        case FontFileError::noName:
            return "Could not get font name from font file";
    }
    return {};
}

std::nullopt_t fontFault(std::string_view message,
                         const std::source_location& where = std::source_location::current()) {
    LogUtils::e(message, {"Utils/Utils", "loadFontName(for:)", where});
    return std::nullopt;
}

}  // namespace

std::optional<Data> Utils::loadFileContents(const URL& url) {
    auto content = readFile(url.path());
    if (content) return std::move(content).value();
    LogUtils::e(content.error().localizedDescription, {"Utils/Utils", "loadFileContents(_:)"});
    return std::nullopt;
}

std::optional<std::string> Utils::loadFontName(std::string_view forName) {
    const std::optional<URL> file = getPathURLFromBundle(forName, Constants::fontType, Bundle::main());
    if (!file) return fontFault("Could not load font file");
    const std::optional<Data> bytes = loadFileContents(*file);
    if (!bytes) return fontFault("Could not load font file contents");
    auto name = postScriptName(*bytes);
    if (!name) return fontFault(describe(name.error()));
    return std::move(name).value();
}

}  // namespace torvel
