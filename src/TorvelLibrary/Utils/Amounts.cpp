#include "TorvelLibrary/Utils/Amounts.h"

#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/Strings.h"
#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/foundation/Text.h"

#include <charconv>
#include <cmath>
#include <mutex>

namespace torvel {
namespace {

// The money locale with its symbol, which takes longer to find than an amount to write.
struct Money {
    std::mutex mutex;
    Locale locale = Locale::current();
    std::optional<std::string> symbol = locale.currencySymbol();

    void setLocale(const Locale& other) {
        if (locale == other) return;
        locale = other;
        symbol = other.currencySymbol();
    }

    void setSymbol(const std::string& other) {
        const auto found = Locale::withCurrencySymbol(other);
        if (!found) return;
        locale = *found;
        symbol = other;
    }
};

Money& sharedMoney() {
    static Money& money = *new Money;  // usable until the very end
    return money;
}

// The symbol to look for in place of a currency: the host may have mapped it.
std::string mappedSymbol(const std::string& currency) {
    const auto library = TorvelLibrary::instance().load();
    if (!library || !library->currencyMap) return currency;
    const auto mapped = library->currencyMap->find(currency);
    return mapped == library->currencyMap->end() ? currency : mapped->second;
}

void chooseLocale(Money& money, const std::string& currency) {
    if (currency.empty())
        money.setLocale(Locale::current());
    else if (money.symbol != currency)
        money.setSymbol(mappedSymbol(currency));
}

}  // namespace

Locale defaultLocale() {
    Money& money = sharedMoney();
    const std::lock_guard lock(money.mutex);
    return money.locale;
}

void setDefaultLocale(const Locale& locale) {
    Money& money = sharedMoney();
    const std::lock_guard lock(money.mutex);
    money.setLocale(locale);
}

NumberFormatter& currencyFormatter() {
    static NumberFormatter& formatter = []() -> NumberFormatter& {
        auto& made = *new NumberFormatter(NumberFormatter::Style::currency);
        made.setMinimumFractionDigits(0);
        made.setMaximumFractionDigits(2);
        made.setRoundingMode(NumberFormatter::RoundingMode::down);
        return made;
    }();
    return formatter;
}

NumberFormatter& withSeparator() {
    static NumberFormatter& formatter = []() -> NumberFormatter& {
        auto& made = *new NumberFormatter(NumberFormatter::Style::decimal, Locale("en"));
        made.setGroupingSeparator(TorvelConfigurations::amountSeparator());
        return made;
    }();
    return formatter;
}

std::string getDisplayAmountWithoutCurrency(std::string_view amount, const std::string& currency,
                                            bool withDecimals) {
    const std::optional<double> number = decimalNumber(amount);
    if (!number) return {};
    Money& money = sharedMoney();
    const std::lock_guard lock(money.mutex);
    NumberFormatter& formatter = currencyFormatter();
    formatter.setMinimumFractionDigits(withDecimals ? 2 : 0);
    chooseLocale(money, currency);
    formatter.setLocale(money.locale);
    const std::optional<std::string> text = formatter.string(*number);
    if (!text) return {};
    const std::string& symbol = money.symbol ? *money.symbol : currency;
    const std::string rest = removingOccurrences(*text, symbol);
    return std::string(CharacterSet::whitespaces().trimming(rest));
}

std::string getDisplayAmount(std::string_view amount, bool isForceLTRCurrency,
                             std::string_view currencyAmountSeparator, const std::string& currency,
                             bool withDecimals) {
    const std::string text = getDisplayAmountWithoutCurrency(amount, currency, withDecimals);
    const bool mirrored = ScreenEnvironment::direction == ScreenEnvironment::Direction::rightToLeft;
    const bool isPrefix = TorvelConfigurations::isCurrencyCodePrefix() != mirrored;
    if (isPrefix) return String::format({currency, text}, currencyAmountSeparator);
    if (isForceLTRCurrency) return String::format({currency, text}, String::space);
    return String::format({text, currency}, currencyAmountSeparator);
}

std::string formattedWithSeparator(double number) { return withSeparator().string(number).value_or(""); }

std::string zeroFormattedValue(float number) {
    char text[64];
    char* const end = text + sizeof text;
    if (std::fmod(number, 1.0F) == 0)  // such a number may have 39 digits
        return {text, std::to_chars(text, end, number, std::chars_format::fixed, 0).ptr};
    const auto form = std::abs(number) < 1e-4F ? std::chars_format::scientific : std::chars_format::fixed;
    return {text, std::to_chars(text, end, number, form).ptr};
}

}  // namespace torvel
