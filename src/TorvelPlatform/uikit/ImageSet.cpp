#include "TorvelPlatform/uikit/ImageSet.h"

#include "TorvelPlatform/uikit/AssetCatalog.h"

#include <tuple>

namespace torvel {
namespace {

// A set's scale is written "2x"; without one the file serves every screen.
double scaleOf(const JSON& entry) {
    const auto member = entry.member("scale");
    const std::string_view text = member ? member->string().value_or("") : "";
    return text == "3x" ? 3 : text == "2x" ? 2 : 1;
}

std::optional<std::string> fileOf(const JSON& entry) {
    const auto member = entry.member("filename");
    const std::string_view name = member ? member->string().value_or("") : "";
    const bool isFile = !name.empty() && name.find_first_of(std::string_view("/\0", 2)) == name.npos;
    return isFile ? std::optional<std::string>(name) : std::nullopt;
}

}  // namespace

std::optional<ImageSetFile> imageOfSet(std::string_view contents, ScreenEnvironment::Style style,
                                       double scale) {
    const auto root = JSON::parse(contents);
    const auto images = root ? root.value().member("images") : std::nullopt;
    if (!images) return std::nullopt;
    std::optional<ImageSetFile> best;
    std::tuple<int, bool, double> bestRank;
    for (const JSON& entry : images->elements()) {
        const int fit = appearanceFitness(entry, style);
        const auto file = fileOf(entry);
        if (fit == 0 || !file) continue;
        const double own = scaleOf(entry);
        const bool isFine = own >= scale;
        const std::tuple rank{fit, isFine, isFine ? -own : own};
        if (best && rank <= bestRank) continue;
        best = {*file, own};
        bestRank = rank;
    }
    return best;
}

}  // namespace torvel
