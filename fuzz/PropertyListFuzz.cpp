#include "Fuzz.h"
#include "TorvelPlatform/foundation/PropertyList.h"

void fuzz(std::string_view bytes) {
    const auto list = torvel::PropertyList::parse(torvel::Data(bytes));
    if (!list) mustHold(!list.error().description.empty());
}
