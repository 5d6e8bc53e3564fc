#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace torvel {

// Why bytes are not a property list: a sentence for a log, with the place where it is known
// ("line 4: expected ..." for text forms, "offset 52: ..." for the binary form).
struct PropertyListError {
    std::string description;  // the sentence
};

// A key of a list's root dictionary, where the file has it.
struct PropertyListKey {
    std::string key;  // the key itself
    int line;         // from 1
};

// A property-list value in any of the platform's forms. Immutable; any thread.
class PropertyList {
  public:
    // A moment.
    using Date = std::chrono::system_clock::time_point;
    // Values in order.
    using Array = std::vector<PropertyList>;
    // Values by name.
    using Dictionary = std::map<std::string, PropertyList, std::less<>>;

    // Reads the binary form ("bplist00"), the XML form (text that starts with "<") or the old text form, with
    // or without the braces of its root dictionary; texts in UTF-8 or UTF-16. Of equal keys the last counts.
    // Dates lie in 1678 to 2261, integers in 64 bits; unique identifiers of keyed archives are integers.
    // Bytes from outside are safe to give: depth and size in memory are bounded.
    //
    // For tools that speak about the file, `rootKeys` receives every key of a text form's root dictionary in
    // the file's order, as often as it stands there; of the binary form, which has no lines, nothing.
    static Outcome<PropertyList, PropertyListError> parse(const Data& bytes,
                                                          std::vector<PropertyListKey>* rootKeys = nullptr);

    // A value of one of the kinds below.
    template <class T>
    explicit PropertyList(T value) : m_value(std::move(value)) {}

    // Copies and moves the whole tree.
    PropertyList(const PropertyList&);
    PropertyList(PropertyList&&) noexcept;
    PropertyList& operator=(const PropertyList&);
    PropertyList& operator=(PropertyList&&) noexcept;
    ~PropertyList();

    // Each nullptr when the value is of another kind.
    const std::string* string() const { return std::get_if<std::string>(&m_value); }
    const std::int64_t* integer() const { return std::get_if<std::int64_t>(&m_value); }
    const double* real() const { return std::get_if<double>(&m_value); }
    const bool* boolean() const { return std::get_if<bool>(&m_value); }
    const Data* data() const { return std::get_if<Data>(&m_value); }
    const Date* date() const { return std::get_if<Date>(&m_value); }
    const Array* array() const { return std::get_if<Array>(&m_value); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&m_value); }

  private:
    std::variant<std::string, std::int64_t, double, bool, Data, Date, Array, Dictionary> m_value;
};

}  // namespace torvel
