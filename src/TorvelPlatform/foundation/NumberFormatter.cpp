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

        writer = decimal->toNumberFormatter(error);
        if (writer) hundredths = writer->scale(icu::number::Scale::powerOfTen(-2));
    }

    // A double that is the nearest to some hundredths of at most 15 digits has those as its shortest decimal.
    // Being told so spares ICU the search, which takes as long as a tenth of the rest.
    icu::number::FormattedNumber format(double number, UErrorCode& error) const {
        const double whole = std::nearbyint(number * 100);
        if (whole != 0 && std::abs(whole) < 1e15 && whole / 100 == number)
            return hundredths.formatInt(static_cast<std::int64_t>(whole), error);
        return writer->formatDouble(number, error);
    }

    // All only read, which any thread may do.
    std::unique_ptr<icu::DecimalFormat> decimal;
    // What it formats with itself, without the copy that it makes of the text. Absent when there is none.
    const icu::number::LocalizedNumberFormatter* writer = nullptr;
    icu::number::LocalizedNumberFormatter hundredths;  // takes a hundred times the number
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
    if (!m_formatter->writer) return std::nullopt;
    UErrorCode error = U_ZERO_ERROR;
    const icu::number::FormattedNumber formatted = m_formatter->format(number, error);
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
