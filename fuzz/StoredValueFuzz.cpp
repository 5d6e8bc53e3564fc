#include "Fuzz.h"
#include "TorvelPlatform/defaults/PropertyCoding.h"

using namespace torvel;

void fuzz(std::string_view bytes) {
    const auto value = decodeProperty(bytes);
    if (!value) return;
    mustHold(encodeProperty(*value) == bytes);
    value->integerValue();
    value->boolValue();
    value->stringValue();
    value->urlValue();
}
