#include "TorvelPlatform/uikit/AssetCatalog.h"

#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "TorvelPlatform/foundation/Text.h"

#include <algorithm>
#include <memory>
#include <mutex>
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

using Assets = ByText<fs::path>;

// Adds what stands in a folder and in the groups below it, whose assets are named with `prefix`. Of two
// assets of one name the first counts.
void add(Assets& assets, const fs::path& folder, const std::string& prefix) {
    for (const fs::path& entry : foldersIn(folder)) {
        const std::string name = prefix + entry.filename().string();
        assets.emplace(name, entry);
        if (entry.has_extension()) continue;  // an asset, no group
        add(assets, entry, providesNamespace(entry) ? name + "/" : prefix);
    }
}

std::shared_ptr<const Assets> readAssets(const fs::path& bundle) {
    const auto assets = std::make_shared<Assets>();
    for (const fs::path& catalog : foldersIn(bundle))
        if (catalog.extension() == ".xcassets") add(*assets, catalog, "");
    return assets;
}

// Those of each bundle that was asked, for the life of the process: resources do not change.
std::shared_ptr<const Assets> assetsOf(const fs::path& bundle) {
    static auto& mutex = *new std::mutex;
    static auto& kept = *new ByText<std::shared_ptr<const Assets>>;
    const std::lock_guard lock(mutex);
    std::shared_ptr<const Assets>& assets = kept[bundle.native()];
    if (!assets) assets = readAssets(bundle);
    return assets;
}

bool says(const JSON& object, std::string_view name, std::string_view value) {
    const auto member = object.member(name);
    return member && member->string() == value;
}

}  // namespace

std::optional<fs::path> assetFolder(const Bundle& bundle, std::string_view name, std::string_view type) {
    const auto assets = assetsOf(bundle.directory());
    const auto found = assets->find(std::string(name).append(".").append(type));
    if (found == assets->end()) return std::nullopt;
    return found->second;
}

int appearanceFitness(const JSON& entry, ScreenEnvironment::Style style) {
    const bool isUniversal = says(entry, "idiom", "universal");
    if (!isUniversal && !says(entry, "idiom", "iphone")) return 0;
    const int least = isUniversal ? 2 : 0;
    const auto appearances = entry.member("appearances");
    if (!appearances) return least + 1;
    const std::string_view wanted = style == ScreenEnvironment::Style::dark ? "dark" : "light";
    for (const JSON& appearance : appearances->elements())
        if (!says(appearance, "appearance", "luminosity") || !says(appearance, "value", wanted)) return 0;
    return least + 2;
}

}  // namespace torvel
