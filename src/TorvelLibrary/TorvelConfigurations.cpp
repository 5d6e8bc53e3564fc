#include "TorvelLibrary/TorvelConfigurations.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/WholeNumber.h"

namespace torvel {
namespace {

std::string text(std::string_view key) {
    return Constants::sdkBundle().localizedString(key, key, Constants::configurationsTable);
}

}  // namespace

const Bundle& Constants::sdkBundle() {
    static const Bundle& bundle = *new Bundle(Bundle::library());
    return bundle;
}

#define TORVEL_TEXT(NAME, KEY)                                  \
    const std::string& TorvelConfigurations::NAME() {           \
        static const std::string& value = *new auto(text(KEY)); \
        return value;                                           \
    }
#define TORVEL_INTEGER(NAME, KEY, FALLBACK)                                          \
    std::int64_t TorvelConfigurations::NAME() {                                      \
        static const std::int64_t value = wholeNumber(text(KEY)).value_or(FALLBACK); \
        return value;                                                                \
    }
#define TORVEL_FLAG(NAME, KEY)                         \
    bool TorvelConfigurations::NAME() {                \
        static const bool value = text(KEY) == "true"; \
        return value;                                  \
    }
TORVEL_CONFIGURATIONS(TORVEL_TEXT, TORVEL_INTEGER, TORVEL_FLAG)
#undef TORVEL_TEXT
#undef TORVEL_INTEGER
#undef TORVEL_FLAG

}  // namespace torvel
