#pragma once

#include "TorvelPlatform/foundation/Locale.h"

#include <compare>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace torvel {

// Writes and reads numbers by the rules of a locale.
//
// A cheap value over what ICU builds for the settings, which takes it some 15 us and the process keeps by
// settings: they may change with every number. One object may be used from any thread while none changes it.
class NumberFormatter {
  public:
    // Digits alone, grouped digits with at most three decimals, or an amount with the locale's currency.
    enum class Style { none, decimal, currency };
    enum class RoundingMode { halfEven, down };
    // A whole number that fits, else a floating-point number.
    using Number = std::variant<std::int64_t, double>;

    // A formatter by the rules of a style and a locale.
    explicit NumberFormatter(Style numberStyle, const Locale& locale = Locale::current());

    // Changes the locale alone.
    void setLocale(const Locale& locale);
    // Unless set, the style and the locale decide.
    void setMinimumFractionDigits(std::int32_t digits);
    void setMaximumFractionDigits(std::int32_t digits);
    void setGroupingSeparator(std::string_view separator);
    // halfEven at first. Rounding looks at the shortest decimal text that reads as the number, not at its
    // binary value: 1.15 rounded down to two decimals is 1.15.
    void setRoundingMode(RoundingMode mode);

    // Absent when ICU has no formatter for the settings.
    std::optional<std::string> string(double number) const;
    // Absent unless the text is a finite number to its end. Digits of every script are read.
    std::optional<Number> number(std::string_view text) const;

  private:
    struct Settings {
        Style style;
        Locale locale;
        std::optional<std::int32_t> minimumFractionDigits;
        std::optional<std::int32_t> maximumFractionDigits;
        std::optional<std::string> groupingSeparator;
        RoundingMode roundingMode = RoundingMode::halfEven;

        auto operator<=>(const Settings&) const = default;
    };
    struct Formatter;
    class Formatters;

    template <class T, class Value>
    void set(T Settings::*setting, const Value& value);

    Settings m_settings;
    std::shared_ptr<const Formatter> m_formatter;
};

}  // namespace torvel
