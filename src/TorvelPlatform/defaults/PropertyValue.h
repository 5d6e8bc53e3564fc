#pragma once

#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/URL.h"

#include <chrono>
#include <concepts>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace torvel {

// Integers of which every value fits 64 bits with a sign.
template <class T>
concept StorableInteger = std::integral<T> && !std::same_as<T, bool> &&
                          (std::signed_integral<T> || sizeof(T) < sizeof(std::int64_t));

// A value of the user defaults: a property-list value, where single-precision numbers and URLs are kinds of
// their own. Converts from what it can hold. Texts are bytes as given; dates count nanoseconds. A value;
// threads may share one that none changes.
class PropertyValue {
  public:
    // A moment.
    using Date = std::chrono::system_clock::time_point;
    // Values in order.
    using Array = std::vector<PropertyValue>;
    // Values by name.
    using Dictionary = std::map<std::string, PropertyValue, std::less<>>;
    // All that a value can be.
    using Kinds =
        std::variant<bool, std::int64_t, float, double, std::string, Data, Date, URL, Array, Dictionary>;

    // A value of the argument's kind; smaller integers become 64 bits, texts are copied.
    PropertyValue(StorableInteger auto value) : m_value(static_cast<std::int64_t>(value)) {}
    PropertyValue(std::same_as<bool> auto value) : m_value(value) {}
    PropertyValue(float value) : m_value(value) {}
    PropertyValue(double value) : m_value(value) {}
    PropertyValue(std::string value) : m_value(std::move(value)) {}
    PropertyValue(std::string_view value) : m_value(std::string(value)) {}
    PropertyValue(const char* value) : m_value(std::string(value)) {}
    PropertyValue(std::nullptr_t) = delete;
    PropertyValue(Data value) : m_value(std::move(value)) {}
    PropertyValue(Date value) : m_value(value) {}
    PropertyValue(URL value) : m_value(std::move(value)) {}
    PropertyValue(Array value) : m_value(std::move(value)) {}
    PropertyValue(Dictionary value) : m_value(std::move(value)) {}
    PropertyValue(const std::vector<std::string>& texts) : m_value(Array(texts.begin(), texts.end())) {}

    // Copies and moves the whole tree.
    PropertyValue(const PropertyValue&);
    PropertyValue(PropertyValue&&) noexcept;
    PropertyValue& operator=(const PropertyValue&);
    PropertyValue& operator=(PropertyValue&&) noexcept;
    ~PropertyValue();

    // The value as a T, one of the kinds; nullptr when it is of another.
    template <class T>
    const T* as() const {
        return std::get_if<T>(&m_value);
    }
    const Kinds& kinds() const { return m_value; }

    // The conversions of the platform's typed readers. Numbers never fail: what has no number is 0.
    //   integer  a number cut towards zero and held at the limits of 64 bits, a Boolean as 1 or 0, the
    //            integer that a text begins with (" 12abc" is 12)
    //   double   a number, or the decimal number that a text begins with; Booleans are deliberately 0
    //   float    the same, rounded to single precision
    //   bool     a number that is not 0; a text that begins with Y, y, T, t or a number from 1 ("001")
    //   string   a text; an integer, a Boolean (1 or 0), a double in 16 and a float in 7 significant digits
    //   url      a URL, or the file URL of a path, where "~" is the user's home
    std::int64_t integerValue() const;
    double doubleValue() const;
    float floatValue() const { return static_cast<float>(doubleValue()); }
    bool boolValue() const;
    std::optional<std::string> stringValue() const;
    std::optional<URL> urlValue() const;
    // Absent unless every element is a text; numbers among them are not converted.
    std::optional<std::vector<std::string>> stringArrayValue() const;

    // Equal in kind and content.
    friend bool operator==(const PropertyValue& a, const PropertyValue& b) { return a.m_value == b.m_value; }

  private:
    Kinds m_value;
};

}  // namespace torvel
