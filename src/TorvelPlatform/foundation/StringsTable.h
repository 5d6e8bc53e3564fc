#pragma once

#include "TorvelPlatform/foundation/PropertyList.h"
#include "TorvelPlatform/foundation/Text.h"

#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// An immutable table of texts by key, as strings files hold them. Safe to read from any thread.
class StringsTable {
  public:
    // Reads a strings file: `"key" = "value";` in UTF-8 or UTF-16, or an XML or binary property list. The
    // root must be a dictionary and every value a string.
    // `keys` as of PropertyList::parse().
    static Outcome<StringsTable, PropertyListError> parse(const Data& bytes,
                                                          std::vector<PropertyListKey>* keys = nullptr);

    // Valid as long as the table lives; nullptr for an unknown key.
    const std::string* value(std::string_view key) const;
    // All of them, in no order.
    const ByText<std::string>& values() const { return m_values; }
    std::size_t size() const { return m_values.size(); }

  private:
    ByText<std::string> m_values;
};

}  // namespace torvel
