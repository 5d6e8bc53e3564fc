#include "TorvelLibrary/WrapperConfig.h"

#include <algorithm>
#include <array>

namespace torvel {
namespace {

constexpr std::array<std::string_view, 7> names{"VelmMoney",  "VelmBPM", "OrbelleRaw", "QuentaMerchantApp",
                                                "VelmWallet", "Dunmere", "Pellox"};

}  // namespace

std::string_view rawValue(WrapperConfig flavour) { return names.at(static_cast<std::size_t>(flavour)); }

std::optional<WrapperConfig> wrapperConfig(std::string_view rawValue) {
    const auto* const found = std::find(names.begin(), names.end(), rawValue);
    if (found == names.end()) return std::nullopt;
    return static_cast<WrapperConfig>(found - names.begin());
}

}  // namespace torvel
