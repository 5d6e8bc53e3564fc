#include "TorvelLibrary/Utils/DocumentFile.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/UserDirectories.h"

#include <fstream>

namespace torvel {
std::optional<std::filesystem::path> documentFile(std::string_view name) {
    constexpr std::string_view separators("/\0", 2);
    const bool isComponent = !name.empty() && name != "." && name != ".." &&
                             name.find_first_of(separators) == std::string_view::npos;
    return isComponent ? std::optional(UserDirectories::documents() / name) : std::nullopt;
}

bool Utils::writeFileToDocumentDirectory(std::string_view fileName, std::string_view text) {
    const auto path = documentFile(fileName);
    if (!path || !isValidUTF8(text) || makePrivateDirectory(path->parent_path())) return false;
    std::ofstream file(*path, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    return file.good();
}

std::string Utils::readFileFromDocumentDirectory(std::string_view fileName) {
    const auto path = documentFile(fileName);
    if (!path) return {};
    const auto content = readFile(path->native());
    return content ? content.value().utf8Text().value_or("") : std::string();
}

bool Utils::deleteFileFromDocumentDirectory(std::string_view fileName) {
    const auto path = documentFile(fileName);
    std::error_code failed;
    return path && std::filesystem::remove(*path, failed) && !failed;
}

}  // namespace torvel
