#include "Fuzz.h"
#include "TorvelPlatform/foundation/StringsTable.h"

void fuzz(std::string_view bytes) {
    const auto table = torvel::StringsTable::parse(torvel::Data(bytes));
    if (!table) mustHold(!table.error().description.empty());
}
