#include "TorvelPlatform/foundation/Locale.h"

#include <map>

#include <gtest/gtest.h>
#include <unicode/dcfmtsym.h>
#include <unicode/uloc.h>

namespace torvel {
namespace {

std::string symbolOfICU(const std::string& identifier) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::DecimalFormatSymbols symbols(icu::Locale(identifier.c_str()), error);
    std::string text;
    return symbols.getConstSymbol(icu::DecimalFormatSymbols::kCurrencySymbol).toUTF8String(text);
}

// Against the symbols that ICU's own formatters write with.
TEST(Locale, KnowsEveryCurrencySymbol) {
    std::map<std::string, std::string> firstOfSymbol;
    for (std::int32_t i = 0; i < uloc_countAvailable(); ++i) {
        const std::string identifier = uloc_getAvailable(i), symbol = symbolOfICU(identifier);
        ASSERT_EQ(Locale::availableIdentifiers().at(static_cast<std::size_t>(i)), identifier);
        EXPECT_EQ(Locale(identifier).currencySymbol().value_or("\u00A4"), symbol) << identifier;
        if (symbol != "\u00A4") firstOfSymbol.emplace(symbol, identifier);
    }
    EXPECT_GT(firstOfSymbol.size(), 100U);
    for (const auto& [symbol, identifier] : firstOfSymbol)
        EXPECT_EQ(Locale::withCurrencySymbol(symbol), Locale(identifier)) << symbol;
}

TEST(Locale, CurrencySymbolsOfOddLocales) {
    EXPECT_EQ(Locale::withCurrencySymbol("\u00A3"), Locale("ar_SS")) << "first in order, not in fame";
    for (const char* symbol : {"", "\u00A4", "no symbol"})
        EXPECT_EQ(Locale::withCurrencySymbol(symbol), std::nullopt) << symbol;
    for (const char* identifier : {"en", "", "xx_YY", "not a locale"})
        EXPECT_EQ(Locale(identifier).currencySymbol(), std::nullopt) << identifier;
    EXPECT_EQ(Locale("en_US@currency=EUR").currencySymbol(), "\u20AC");
}

}  // namespace
}  // namespace torvel
