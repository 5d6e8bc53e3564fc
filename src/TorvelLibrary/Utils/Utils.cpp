#include "TorvelLibrary/Utils/Utils.h"

#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/File.h"

namespace torvel {

std::optional<Data> Utils::loadFileContents(const URL& url) {
    auto content = readFile(url.path());
    if (content) return std::move(content).value();
    LogUtils::e(content.error().localizedDescription, {"Utils/Utils", "loadFileContents(_:)"});
    return std::nullopt;
}

}  // namespace torvel
