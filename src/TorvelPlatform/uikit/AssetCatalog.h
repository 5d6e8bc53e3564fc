#pragma once

#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"

#include <filesystem>
#include <optional>
#include <string_view>

namespace torvel {

// The folder of an asset, "<name>.<type>" ("Brand", "colorset"), in the asset catalogues of a bundle: the
// folders "*.xcassets" in its root, and the groups in them. A group counts for nothing unless its
// "Contents.json" says that it provides a namespace: the asset's name then is "Group/Brand". Absent when
// there is none. A bundle's catalogues are looked through once a process. Any thread.
std::optional<std::filesystem::path> assetFolder(const Bundle& bundle, std::string_view name,
                                                 std::string_view type);

// How well an entry of an asset's "Contents.json" suits an appearance: 0 not at all, 1 as the one for phones
// in any appearance, 2 for phones in that one, 3 for any device in any appearance, 4 for any device in that
// one. Any thread.
int appearanceFitness(const JSON& entry, ScreenEnvironment::Style style);

}  // namespace torvel
