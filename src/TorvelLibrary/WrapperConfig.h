#pragma once

#include <optional>
#include <string_view>

namespace torvel {

// The host application's flavour. The first is the default. It selects, among other things, the member
// names of the encrypted envelope. Any thread.
enum class WrapperConfig { VelmMoney, VelmBPM, OrbelleRaw, QuentaMerchantApp, VelmWallet, Dunmere, Pellox };

// The flavour's name, the same as in the code.
std::string_view rawValue(WrapperConfig flavour);
// The flavour of that name, exactly; absent when there is none.
std::optional<WrapperConfig> wrapperConfig(std::string_view rawValue);

}  // namespace torvel
