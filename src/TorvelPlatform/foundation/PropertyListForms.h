#pragma once  // internal

#include "TorvelPlatform/foundation/PropertyList.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// Containers inside containers beyond this many levels are refused in every form.
constexpr int maximumPropertyListDepth = 512;

// "line 4: <message>", for a position in a text.
PropertyListError faultAtLine(std::string_view text, std::size_t position, const std::string& message);

// Notes the keys of a root dictionary with their lines, met in the text's order; nothing without a list.
class RootKeys {
  public:
    RootKeys(std::string_view text, std::vector<PropertyListKey>* keys) : m_text(text), m_keys(keys) {}
    void note(const std::string& key, std::size_t position);

  private:
    std::string_view m_text;
    std::vector<PropertyListKey>* m_keys;
    std::size_t m_counted = 0;  // up to here
    int m_line = 1;
};

// The same list as a UTF-8 text's XML property list in the plainest markup, for libplist: without prolog,
// comments, attributes and entities, which it decodes in quadratic time. The error is the first fault of the
// markup, of the order of elements or of their contents. Document types with declarations of their own are
// refused, so that no entity expands.
Outcome<std::string, PropertyListError> plainXMLPropertyList(std::string_view text,
                                                             std::vector<PropertyListKey>* rootKeys);

// What keeps bytes from being a binary property list ("bplist00"): trailer, offsets, markers, counts and
// references out of bounds, cycles, depth, and an expanded size out of all proportion. Also refused: nulls,
// sets, integers beyond 64 bits, texts with a NUL character or half a surrogate pair.
std::optional<PropertyListError> faultInBinaryPropertyList(std::string_view bytes);

// "2024-02-29T12:34:56Z", within what PropertyList::Date holds.
std::optional<PropertyList::Date> propertyListDate(std::string_view text);

}  // namespace torvel
