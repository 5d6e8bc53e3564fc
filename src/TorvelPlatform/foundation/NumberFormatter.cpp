#include "TorvelPlatform/foundation/NumberFormatter.h"

#include "TorvelPlatform/foundation/UnicodeText.h"

#include <cmath>
#include <map>
#include <mutex>

#include <unicode/decimfmt.h>
#include <unicode/numberformatter.h>

namespace torvel {
namespace {

UNumberFormatStyle icuStyle(NumberFormatter::Style style) {
    return style == NumberFormatter::Style::currency ? UNUM_CURRENCY : UNUM_DECIMAL;
}

icu::DecimalFormat::ERoundingMode icuRoundingMode(NumberFormatter::RoundingMode mode) {
    return mode == NumberFormatter::RoundingMode::down ? icu::DecimalFormat::kRoundDown
                                                       : icu::DecimalFormat::kRoundHalfEven;
}

void setSeparator(icu::DecimalFormat& decimal, const std::string& separator) {
    icu::DecimalFormatSymbols symbols(*decimal.getDecimalFormatSymbols());
    symbols.setSymbol(icu::DecimalFormatSymbols::kGroupingSeparatorSymbol, unicodeText(separator));
    symbols.setSymbol(icu::DecimalFormatSymbols::kMonetaryGroupingSeparatorSymbol, unicodeText(separator));
    decimal.setDecimalFormatSymbols(symbols);
}

}  // namespace

struct NumberFormatter::Formatter {
    explicit Formatter(const Settings& settings) {
        UErrorCode error = U_ZERO_ERROR;
        const icu::Locale locale(settings.locale.identifier().c_str());
        std::unique_ptr<icu::NumberFormat> format(
            icu::NumberFormat::createInstance(locale, icuStyle(settings.style), error));
        if (U_FAILURE(error)) return;
        decimal.reset(dynamic_cast<icu::DecimalFormat*>(format.get()));
        if (!decimal) return;  // a locale whose digits are written by rules
        static_cast<void>(format.release());

        if (settings.style == Style::none) decimal->setGroupingUsed(false);
        decimal->setRoundingMode(icuRoundingMode(settings.roundingMode));
        if (settings.maximumFractionDigits)
            decimal->setMaximumFractionDigits(*settings.maximumFractionDigits);
        if (settings.minimumFractionDigits)
            decimal->setMinimumFractionDigits(*settings.minimumFractionDigits);
        if (settings.groupingSeparator) setSeparator(*decimal, *settings.groupingSeparator);
    }

    std::unique_ptr<icu::DecimalFormat> decimal;  // only read, which any thread may do
};

// The formatters that the process keeps, for ever. Beyond the bound they are built anew each time.
class NumberFormatter::Formatters {
  public:
    static std::shared_ptr<const Formatter> of(const Settings& settings) {
        static Formatters& kept = *new Formatters;  // usable until the very end
        return kept.found(settings);
    }

  private:
    static constexpr std::size_t bound = 64;

    std::shared_ptr<const Formatter> found(const Settings& settings) {
        const std::lock_guard lock(m_mutex);
        if (const auto known = m_formatters.find(settings); known != m_formatters.end()) return known->second;
        auto formatter = std::make_shared<const Formatter>(settings);
        if (m_formatters.size() < bound) m_formatters.emplace(settings, formatter);
        return formatter;
    }

    std::mutex m_mutex;
    std::map<Settings, std::shared_ptr<const Formatter>> m_formatters;
};

NumberFormatter::NumberFormatter(Style numberStyle, const Locale& locale)
    : m_settings{numberStyle, locale, {}, {}, {}, {}}, m_formatter(Formatters::of(m_settings)) {}

template <class T, class Value>
void NumberFormatter::set(T Settings::*setting, const Value& value) {
    if (m_settings.*setting == value) return;
    m_settings.*setting = value;
    m_formatter = Formatters::of(m_settings);
}

void NumberFormatter::setLocale(const Locale& locale) { set(&Settings::locale, locale); }

void NumberFormatter::setMinimumFractionDigits(std::int32_t digits) {
    set(&Settings::minimumFractionDigits, digits);
}

void NumberFormatter::setMaximumFractionDigits(std::int32_t digits) {
    set(&Settings::maximumFractionDigits, digits);
}

void NumberFormatter::setGroupingSeparator(std::string_view separator) {
    set(&Settings::groupingSeparator, separator);
}

void NumberFormatter::setRoundingMode(RoundingMode mode) { set(&Settings::roundingMode, mode); }

std::optional<std::string> NumberFormatter::string(double number) const {
    const auto& decimal = m_formatter->decimal;
    if (!decimal) return std::nullopt;
    // What DecimalFormat itself formats with, without the copy that it makes of the text.
    UErrorCode error = U_ZERO_ERROR;
    const icu::number::LocalizedNumberFormatter* const writer = decimal->toNumberFormatter(error);
    if (U_FAILURE(error)) return std::nullopt;
    const icu::number::FormattedNumber formatted = writer->formatDouble(number, error);
    std::string text = utf8Text(formatted.toTempString(error));
    return U_SUCCESS(error) ? std::optional<std::string>(std::move(text)) : std::nullopt;
}

std::optional<NumberFormatter::Number> NumberFormatter::number(std::string_view text) const {
    const auto& decimal = m_formatter->decimal;
    if (!decimal) return std::nullopt;
    const icu::UnicodeString source = unicodeText(text);
    icu::Formattable parsed;
    icu::ParsePosition end;
    decimal->parse(source, parsed, end);
    if (end.getIndex() == 0 || end.getIndex() != source.length()) return std::nullopt;
    UErrorCode error = U_ZERO_ERROR;
    if (parsed.getType() != icu::Formattable::kDouble) return parsed.getInt64(error);
    const double number = parsed.getDouble(error);
    return std::isfinite(number) ? std::optional<Number>(number) : std::nullopt;
}

}  // namespace torvel
