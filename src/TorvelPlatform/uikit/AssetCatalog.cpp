#include "TorvelPlatform/uikit/AssetCatalog.h"

#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/JSON.h"

#include <algorithm>
#include <string>
#include <vector>

namespace torvel {
namespace {

namespace fs = std::filesystem;

// The folders in a folder, sorted, so that which of two assets of one name is found does not depend on the
// disk.
std::vector<fs::path> foldersIn(const fs::path& folder) {
    std::vector<fs::path> folders;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        std::error_code noFolder;
        if (entry->is_directory(noFolder) && !entry->is_symlink(noFolder)) folders.push_back(entry->path());
    }
    std::sort(folders.begin(), folders.end());
    return folders;
}

bool providesNamespace(const fs::path& group) {
    const auto contents = readFile(group / "Contents.json");
    const auto root = JSON::parse(contents ? std::string_view(contents.value().raw()) : "");
    const auto properties = root ? root.value().member("properties") : std::nullopt;
    const auto flag = properties ? properties->member("provides-namespace") : std::nullopt;
    return flag && flag->isTrue();
}

// `file` is the name of the asset's folder, from where `folder` stands.
std::optional<fs::path> find(const fs::path& folder, std::string_view file) {
    for (const fs::path& entry : foldersIn(folder)) {
        const std::string name = entry.filename().string();
        if (name == file) return entry;
        if (entry.has_extension()) continue;  // another asset
        std::string_view rest = file;
        if (providesNamespace(entry)) {
            if (!rest.starts_with(name + "/")) continue;
            rest.remove_prefix(name.size() + 1);
        }
        if (auto found = find(entry, rest)) return found;
    }
    return std::nullopt;
}

bool says(const JSON& object, std::string_view name, std::string_view value) {
    const auto member = object.member(name);
    return member && member->string() == value;
}

}  // namespace

std::optional<fs::path> assetFolder(const Bundle& bundle, std::string_view name, std::string_view type) {
    const std::string file = std::string(name) + "." + std::string(type);
    for (const fs::path& catalog : foldersIn(bundle.directory())) {
        if (catalog.extension() != ".xcassets") continue;
        if (auto found = find(catalog, file)) return found;
    }
    return std::nullopt;
}

int appearanceFitness(const JSON& entry, ScreenEnvironment::Style style) {
    if (!says(entry, "idiom", "universal")) return 0;
    const auto appearances = entry.member("appearances");
    if (!appearances) return 1;
    const std::string_view wanted = style == ScreenEnvironment::Style::dark ? "dark" : "light";
    for (const JSON& appearance : appearances->elements())
        if (!says(appearance, "appearance", "luminosity") || !says(appearance, "value", wanted)) return 0;
    return 2;
}

}  // namespace torvel
