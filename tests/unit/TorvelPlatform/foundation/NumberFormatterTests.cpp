#include "TorvelPlatform/foundation/NumberFormatter.h"

#include <cstdio>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using Style = NumberFormatter::Style;

void cutToTwoDecimals(NumberFormatter& formatter) {
    formatter.setMinimumFractionDigits(2);
    formatter.setMaximumFractionDigits(2);
    formatter.setRoundingMode(NumberFormatter::RoundingMode::down);
}

// Patterns and symbols from CLDR 42, which ICU 72 carries.
TEST(NumberFormatter, WritesByTheLocale) {
    const struct {
        Style style;
        const char* locale;
        double number;
        const char* text;
    } rows[] = {
        {Style::decimal, "en_US", 1234567.8915, "1,234,567.892"},
        {Style::decimal, "hi_IN", 1234567, "12,34,567"},
        {Style::decimal, "en_US", -0.0, "-0"},
        {Style::none, "en_US", 1234567, "1234567"},
        {Style::currency, "en_US", -1234.5, "-$1,234.50"},
        {Style::currency, "ja_JP", 1234.5, "\uFFE51,234"},
        {Style::currency, "ar_EG", 5, "\u200F\u0665\u066B\u0660\u0660\u00A0\u062C.\u0645.\u200F"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(NumberFormatter(row.style, Locale(row.locale)).string(row.number), row.text);
}

TEST(NumberFormatter, SettingsOutliveTheLocale) {
    NumberFormatter formatter(Style::currency, Locale("en_US"));
    cutToTwoDecimals(formatter);
    EXPECT_EQ(formatter.string(1.999), "$1.99");
    EXPECT_EQ(formatter.number("$12"), NumberFormatter::Number(std::int64_t{12}));
    EXPECT_EQ(formatter.number("$9223372036854775808"), NumberFormatter::Number(0x1p63));
    formatter.setLocale(Locale("ja_JP"));
    EXPECT_EQ(formatter.string(1.999), "\uFFE51.99");
    formatter.setGroupingSeparator("'");
    EXPECT_EQ(formatter.string(1000), "\uFFE51'000.00");
    formatter.setLocale(Locale("en_GB"));
    formatter.setMinimumFractionDigits(0);
    EXPECT_EQ(formatter.string(1000), "\u00A31'000");
}

// Every hundredth is the double that is nearest to it, as often below as above.
TEST(NumberFormatter, RoundsTheShortestDecimalForm) {
    NumberFormatter formatter(Style::none, Locale("en_US"));
    cutToTwoDecimals(formatter);
    for (int cents = 0; cents < 100000; ++cents) {
        char text[32];
        std::snprintf(text, sizeof text, "%d.%02d", cents / 100, cents % 100);
        ASSERT_EQ(formatter.string(cents / 100.0), text);
    }
}

TEST(NumberFormatter, ServesThreads) {
    const NumberFormatter shared(Style::currency, Locale("en_US"));
    const auto write = [&shared] {
        NumberFormatter own(Style::currency, Locale("en_US"));
        for (int i = 0; i < 200; ++i) {
            EXPECT_EQ(shared.string(5), "$5.00");
            EXPECT_EQ(shared.number("$5.50"), NumberFormatter::Number(5.5));
            own.setMaximumFractionDigits(i);  // more settings than are kept
            own.setLocale(Locale(i % 2 == 0 ? "en_GB" : "en_US"));
            EXPECT_EQ(own.string(0.5)->substr(0, 2), i % 2 == 0 ? "\u00A3" : "$0");
        }
    };
    std::thread other(write);
    write();
    other.join();
}

}  // namespace
}  // namespace torvel
