#include "Fuzz.h"
#include "TorvelPlatform/foundation/PropertyList.h"

#include <set>

using namespace torvel;

void fuzz(std::string_view bytes) {
    std::vector<PropertyListKey> rootKeys;
    const auto list = PropertyList::parse(Data(bytes), &rootKeys);
    if (!list) return mustHold(!list.error().description.empty());

    // The keys with places are those of the root, in the forms that have lines.
    std::set<std::string> placed, known;
    for (const auto& [key, line] : rootKeys) placed.insert(key);
    if (const auto* const root = list.value().dictionary())
        for (const auto& [key, value] : *root) known.insert(key);
    mustHold(placed == known || bytes.starts_with("bplist00"));
}
