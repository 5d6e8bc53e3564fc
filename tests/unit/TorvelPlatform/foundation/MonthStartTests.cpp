#include "TorvelPlatform/foundation/MonthStart.h"

#include <cstdlib>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using namespace std::chrono;

std::optional<std::int64_t> seconds1970(std::string_view text) {
    const auto month = parseMonthStart(text);
    if (!month) return std::nullopt;
    return floor<seconds>(*month).time_since_epoch().count();
}

class MonthStartInLocale : public testing::TestWithParam<const char*> {};

// Expected instants from coreutils: TZ=Africa/Nairobi date -d 2027-08-01 +%s.
TEST_P(MonthStartInLocale, ReadsMonthsOfTheGregorianCalendar) {
    setenv("LC_ALL", GetParam(), 1);
    setenv("TZ", "Africa/Nairobi", 1);
    const std::int64_t august2027 = 1817067600;
    for (const char* text : {"08/27", "8/27", "08/2027", "\u0660\u0668/\u0662\u0667"})
        EXPECT_EQ(seconds1970(text), august2027) << text;
    EXPECT_EQ(seconds1970("12/26"), 1796072400);
    EXPECT_EQ(seconds1970("01/1970"), -10800);
    for (const char* text : {"13/27", "00/27", "008/27", "-8/27", "08/27x", "08/27 ", " 08/27", "08/ 27",
                             "08/27\n", "08-27", "0827", "08/", "/27", "", "abc", "Aug/27", "08/99999999999"})
        EXPECT_EQ(seconds1970(text), std::nullopt) << text;
}

INSTANTIATE_TEST_SUITE_P(Locales, MonthStartInLocale,
                         testing::Values("en_US", "de_DE", "th_TH", "fa_IR", "ar_SA", "ja_JP", "C"));

TEST(MonthStart, TwoDigitsReachTwentyYearsAhead) {
    setenv("TZ", "UTC", 1);
    const year_month_day today(floor<days>(system_clock::now()));
    for (int ahead = -79; ahead < 20; ++ahead) {
        const year there = today.year() + years(ahead);
        char text[16];
        std::snprintf(text, sizeof text, "06/%02d", static_cast<int>(there) % 100);
        EXPECT_EQ(parseMonthStart(text), sys_days(there / June / 1)) << text;
    }
}

// Midnight of 1 October 2017 was skipped in Paraguay: the month began at one o'clock, 04:00 UTC.
TEST(MonthStart, AMonthMayBeginInTheGapOfTheClocks) {
    setenv("TZ", "America/Asuncion", 1);
    EXPECT_EQ(parseMonthStart("10/2017"), sys_days(2017y / October / 1) + 4h);
}

}  // namespace
}  // namespace torvel
