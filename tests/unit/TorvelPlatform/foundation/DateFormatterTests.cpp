#include "TorvelPlatform/foundation/DateFormatter.h"
#include "TorvelPlatform/foundation/Diagnostics.h"

#include <cstdlib>
#include <random>
#include <thread>

#include <gtest/gtest.h>
#include <unicode/basictz.h>
#include <unicode/smpdtfmt.h>
#include <unicode/tztrans.h>

namespace torvel {
namespace {

using namespace std::chrono;

DateFormatter::Date atMilliseconds(std::int64_t count) { return DateFormatter::Date(milliseconds(count)); }

TEST(DateFormatter, LocalesOfOtherDigitsAndCalendarsGoThroughICU) {
    setenv("TZ", "UTC", 1);
    const auto date = atMilliseconds(1709175845000);
    EXPECT_EQ(DateFormatter("yyyy", Locale("ar_EG")).string(date), "\u0662\u0660\u0662\u0664");
    EXPECT_EQ(DateFormatter("yyyy", Locale("th_TH")).string(date), "2567");
    EXPECT_EQ(DateFormatter("MMMM", Locale("fr_CA")).string(date), "f\u00e9vrier");
    EXPECT_EQ(DateFormatter("d MMM y, EEE", Locale("en")).string(date), "29 Feb 2024, Thu");
    EXPECT_EQ(DateFormatter("", Locale("en")).string(date), "");
}

TEST(DateFormatter, InvalidPatternsGiveTheEmptyTextAndOneReport) {
    static int reports = 0;
    setDiagnosticSink([](std::string_view, const std::source_location&) { ++reports; });
    for (int i = 0; i < 3; ++i) EXPECT_EQ(DateFormatter("yyyy T").string(atMilliseconds(0)), "");
    EXPECT_EQ(reports, 1);
}

TEST(DateFormatter, ManyPatternsAndThreads) {
    setenv("TZ", "UTC", 1);
    const auto check = [] {
        for (int i = 0; i < 200; ++i) {
            const std::string tail(static_cast<std::size_t>(i), '.');
            EXPECT_EQ(DateFormatter("yyyy" + tail).string(atMilliseconds(0)), "1970" + tail);
            EXPECT_EQ(DateFormatter("MMM" + tail, Locale("en")).string(atMilliseconds(0)), "Jan" + tail);
        }
    };
    std::thread other(check);
    check();
    other.join();
}

// The process's zone is read once, so each zone is a case of its own.
class DateFormatterInZone : public testing::TestWithParam<const char*> {};

TEST_P(DateFormatterInZone, AgreesWithICUAtEveryTransition) {
    setenv("TZ", GetParam(), 1);
    std::vector<double> instants;
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(GetParam()));
    icu::TimeZoneTransition transition;
    double time = -9.2e12;
    const auto* rules = dynamic_cast<const icu::BasicTimeZone*>(zone.get());
    while (time < 2.5e12 && rules->getNextTransition(time, false, transition)) {
        time = transition.getTime();
        for (const double step : {-3600e3, -1e3, -1.0, 0.0, 1.0, 29e3, 1800e3})
            instants.push_back(time + step);
    }
    std::mt19937 random(1);
    std::uniform_real_distribution<double> any(-9.2e12, 9.2e12);  // what a system_clock holds
    for (int i = 0; i < 2000; ++i) instants.push_back(std::floor(any(random)));

    for (const char* pattern :
         {"yyyy-MM-dd hh:mm:ssSSS", "y yy M d H h m s S'at'SSSS ''", "dd.MM.yyy HH-'open"}) {
        UErrorCode status = U_ZERO_ERROR;
        icu::SimpleDateFormat peer(pattern, icu::Locale("en_US"), status);
        peer.setTimeZone(*zone);
        for (const double instant : instants) {
            icu::UnicodeString text;
            std::string expected;
            peer.format(instant, text).toUTF8String(expected);
            ASSERT_EQ(DateFormatter(pattern, Locale("en_US")).string(atMilliseconds(std::int64_t(instant))),
                      expected);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Zones, DateFormatterInZone,
                         testing::Values("UTC", "America/New_York", "Asia/Kolkata", "Australia/Lord_Howe",
                                         "Africa/Monrovia", "Pacific/Apia", "Europe/Dublin"));

}  // namespace
}  // namespace torvel
