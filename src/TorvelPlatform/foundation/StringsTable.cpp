#include "TorvelPlatform/foundation/StringsTable.h"

namespace torvel {

Outcome<StringsTable, PropertyListError> StringsTable::parse(const Data& bytes,
                                                             std::vector<PropertyListKey>* keys) {
    const auto list = PropertyList::parse(bytes, keys);
    if (!list) return list.error();
    const PropertyList::Dictionary* members = list.value().dictionary();
    if (members == nullptr) return PropertyListError{"the root of a strings table is not a dictionary"};
    StringsTable table;
    for (const auto& [key, value] : *members) {
        if (value.string() == nullptr)
            return PropertyListError{"the value of \"" + key + "\" is not a string"};
        table.m_values.emplace(key, *value.string());
    }
    return table;
}

const std::string* StringsTable::value(std::string_view key) const {
    const auto entry = m_values.find(key);
    return entry == m_values.end() ? nullptr : &entry->second;
}

}  // namespace torvel
