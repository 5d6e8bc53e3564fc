#include "TorvelLibrary/Data/Remote/Networking/Target.h"

#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/PercentEncoding.h"

namespace torvel {

std::optional<URL> wholeURL(std::string_view target) {
    if (!target.starts_with("http")) return std::nullopt;
    const auto encoded = addingPercentEncoding(target, CharacterSet::urlQueryAllowed());
    return encoded ? URL::parse(*encoded) : std::nullopt;
}

}  // namespace torvel
