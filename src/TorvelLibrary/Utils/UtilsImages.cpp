#include "TorvelLibrary/Utils/DocumentFile.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelPlatform/foundation/UserDirectories.h"
#include "TorvelPlatform/uikit/qt/UIImage.h"

#include <cerrno>
#include <fstream>

namespace torvel {
namespace {

void logFailure(const std::filesystem::path& path, const std::error_code& failed) {
    if (failed)
        LogUtils::d(path.string() + ": " + failed.message(),
                    {"Utils/Utils", "writeImageFileToDocumentDirectory(imageName:image:)"});
}

std::error_code writeBytes(const std::filesystem::path& path, const std::string& bytes) {
    errno = 0;
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << bytes;
    file.close();
    if (file.good()) return {};
    return {errno != 0 ? errno : EIO, std::generic_category()};
}

}  // namespace

void Utils::writeImageFileToDocumentDirectory(std::string_view imageName, const UIImage& image) {
    const auto path = documentFile(imageName);
    const auto jpeg = path ? image.jpegData(1) : std::nullopt;
    if (!jpeg) return;
    std::error_code failed = makePrivateDirectory(path->parent_path());
    logFailure(path->parent_path(), failed);
    std::filesystem::remove(*path, failed);  // what cannot be removed may still be written over
    logFailure(*path, failed);
    logFailure(*path, writeBytes(*path, jpeg->raw()));
}

std::optional<UIImage> Utils::readImageFileFromDocumentDirectory(std::string_view fileName) {
    const auto path = documentFile(fileName);
    return path ? UIImage::fromFile(path->string()) : std::nullopt;
}

}  // namespace torvel
