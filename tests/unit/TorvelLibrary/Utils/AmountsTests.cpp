#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/Amounts.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelTesting/HostFixture.h"

#include <thread>

namespace torvel {
namespace {

struct Amounts : testing::HostFixture {
    Amounts() {
        ::setenv("LC_ALL", "en_US.UTF-8", 1);
        Bundle::setLibrary(directory());
    }
};

// Grouping, digits and marks from CLDR 42, which ICU 72 carries.
TEST_F(Amounts, AreWrittenWithoutTheCurrency) {
    const struct {
        const char *locale, *amount;
        bool decimals;
        const char* text;
    } rows[] = {
        {"en_US", "1234.567", true, "1,234.56"},
        {"en_US", "1234", false, "1,234"},
        {"en_US", "1234", true, "1,234.00"},
        {"en_US", "1234.5", false, "1,234.5"},
        {"en_US", "1.15", true, "1.15"},
        {"en_US", "-1234.567", true, "-1,234.56"},
        {"en_US", "0.001", false, "0"},
        {"en_US", "1e3", false, "1,000"},
        {"fr_FR", "1234.567", true, "1\u202F234,56"},
        {"ar_EG", "1234.5", true, "\u200F\u0661\u066C\u0662\u0663\u0664\u066B\u0665\u0660"},
        {"de_CH", "-1234.5", true, "-1\u2019234.50"},
        {"nl_NL", "-5", false, "-5"},
        {"bem_ZM", "-5", false, "-\u00A05"},  // the space stood between the symbol and the digits
    };
    for (const auto& row : rows) {
        const Locale locale(row.locale);
        setDefaultLocale(locale);
        EXPECT_EQ(getDisplayAmountWithoutCurrency(row.amount, *locale.currencySymbol(), row.decimals),
                  row.text)
            << row.locale << " " << row.amount;
        EXPECT_EQ(defaultLocale(), locale);
    }
}

TEST_F(Amounts, TheCurrencyChoosesTheLocale) {
    const struct {
        const char* currency;
        const char* locale;  // afterwards
        const char* text;
    } rows[] = {
        {"$", "en_US", "5.50"},  // the current one has the symbol
        {"\u20AC", "ast_ES", "5,50"}, {"no symbol", "ast_ES", "5,50"},
        {"\u00A4", "ast_ES", "5,50"}, {"\u00A3", "ar_SS", "\u200F\u0665\u066B\u0665\u0660"},
        {"", "en_US", "5.50"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(getDisplayAmountWithoutCurrency("5.5", row.currency, true), row.text) << row.currency;
        EXPECT_EQ(defaultLocale(), Locale(row.locale)) << row.currency;
    }
    for (const char* text : {"abc", "1,000", " 5", "", "0x10", "inf", "nan"})
        EXPECT_EQ(getDisplayAmountWithoutCurrency(text, "\u20AC", true), "") << text;
    EXPECT_EQ(defaultLocale(), Locale("en_US")) << "what is no number changes nothing";
    // A locale without a region has no symbol of its own: the generic sign is not the currency's, and stays.
    setDefaultLocale(Locale("en"));
    EXPECT_EQ(getDisplayAmountWithoutCurrency("5", "no symbol", false), "\u00A45");
    EXPECT_EQ(getDisplayAmountWithoutCurrency("5", "\u00A4", false), "5");
}

TEST_F(Amounts, TheHostMayMapCurrencies) {
    TorvelLibraryBuilder().build();
    TorvelLibrary::sharedInstance()->currencyMap = {{"EUR", "\u20AC"}, {"$", "no symbol"}};
    EXPECT_EQ(getDisplayAmountWithoutCurrency("5.5", "EUR", true), "5,50");
    EXPECT_EQ(defaultLocale(), Locale("ast_ES"));
    getDisplayAmountWithoutCurrency("5.5", "$", true);
    EXPECT_EQ(defaultLocale(), Locale("ast_ES"));
}

class AmountComposition : public Amounts, public ::testing::WithParamInterface<bool> {};

TEST_P(AmountComposition, PutsTheCurrencyOnItsSide) {
    const bool isPrefix = GetParam();
    addResource("Configurations.strings", isPrefix ? "torvel_currency_prefix = true;" : "");
    using enum ScreenEnvironment::Direction;
    const struct {
        ScreenEnvironment::Direction direction;
        bool forced;
        const char* prefixed;  // by the configuration
        const char* unprefixed;
    } rows[] = {
        {leftToRight, false, "$_1.00", "1.00_$"},
        {leftToRight, true, "$_1.00", "$ 1.00"},
        {rightToLeft, false, "1.00_$", "$_1.00"},
        {rightToLeft, true, "$ 1.00", "$_1.00"},
    };
    for (const auto& row : rows) {
        ScreenEnvironment::direction = row.direction;
        EXPECT_EQ(getDisplayAmount("1", row.forced, "_", "$", true),
                  isPrefix ? row.prefixed : row.unprefixed);
    }
    ScreenEnvironment::direction = leftToRight;
    EXPECT_EQ(getDisplayAmount("abc", false, "_", "$", true), isPrefix ? "$_" : "_$");
}

INSTANTIATE_TEST_SUITE_P(Prefix, AmountComposition, ::testing::Bool());

TEST_F(Amounts, TheSeparatorIsTheOneOfTheFirstUse) {
    addResource("Configurations.strings", "torvel_amount_separator = \"'\";");
    EXPECT_EQ(formattedWithSeparator(1234567.8915), "1'234'567.892");
    EXPECT_EQ(formattedWithSeparator(-12), "-12");
    withSeparator().setGroupingSeparator(" ");
    EXPECT_EQ(formattedWithSeparator(1234), "1 234");
}

TEST_F(Amounts, WholeNumbersLoseTheirDecimals) {
    const std::pair<float, const char*> rows[] = {
        {5.0F, "5"},         {5.25F, "5.25"},           {-0.1F, "-0.1"},
        {0.0F, "0"},         {16777216.0F, "16777216"}, {0.0001F, "0.0001"},
        {0.00005F, "5e-05"}, {1e10F, "10000000000"},
    };
    for (const auto& [number, text] : rows) EXPECT_EQ(zeroFormattedValue(number), text);
}

TEST_F(Amounts, SurviveThreads) {
    const auto write = [](const std::string& currency) {
        for (int i = 0; i < 100; ++i) {
            const std::string text = getDisplayAmountWithoutCurrency("5.5", currency, true);
            EXPECT_EQ(text, currency == "$" ? "5.50" : "5,50");
        }
    };
    std::thread other(write, "\u20AC");
    // The euro's first locale is not the current one, so that both threads change it.
    for (int i = 0; i < 100; ++i) getDisplayAmountWithoutCurrency("5.5", "", true);
    other.join();
}

}  // namespace
}  // namespace torvel
