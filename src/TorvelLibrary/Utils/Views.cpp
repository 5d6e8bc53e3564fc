#include "TorvelLibrary/Utils/Views.h"

#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelPlatform/foundation/Locale.h"

namespace torvel {

UINib nibNamed(std::string_view name, const Bundle& otherwise) {
    const Bundle main = Bundle::main();
    return {name, main.path(name, "ui") ? main : otherwise};
}

bool isRTL() { return Locale::isRightToLeft(LocaleHelper::currentAppleLanguage()); }

}  // namespace torvel
