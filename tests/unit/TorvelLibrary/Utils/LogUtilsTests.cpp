#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelTesting/HostFixture.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

class Log : public testing::HostFixture {};

TEST_F(Log, EverySeverityHasItsTag) {
    const LogSite site("a/b/File.cpp", 7, 3, "run()");
    EXPECT_EQ(logOf([&] {
                  LogUtils::e("1", site);
                  LogUtils::i("2", site);
                  LogUtils::d("3", site);
                  LogUtils::v("4", site);
                  LogUtils::w("5", site);
                  LogUtils::s("6", site);
              }),
              " [\u203C\uFE0F] ERROR[File.cpp]:7 3 run() -> 1\n"
              " [\u2139\uFE0F] INFO[File.cpp]:7 3 run() -> 2\n"
              " [\U0001F4AC] DEBUG[File.cpp]:7 3 run() -> 3\n"
              " [\U0001F52C] VERBOSE[File.cpp]:7 3 run() -> 4\n"
              " [\u26A0\uFE0F] WARNING[File.cpp]:7 3 run() -> 5\n"
              " [\U0001F525] SEVERE[File.cpp]:7 3 run() -> 6\n");
}

TEST_F(Log, ShowsTheLastPartOfTheFilePath) {
    EXPECT_THAT(logOf([] {
                    for (const char* path : {"Whole", "a/", "", "/x/y"}) LogUtils::e("", {path, 1, 1, "f"});
                }),
                ::testing::MatchesRegex(".*ERROR.Whole.:.*ERROR..:.*ERROR..:.*ERROR.y.:.*"));
}

TEST_F(Log, SaysNothingUntilEnabled) {
    ::testing::internal::CaptureStdout();
    LogUtils::e("hidden");
    LogUtils::print("hidden");
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST_F(Log, PrintsValuesByTheirDescription) {
    const char* const nothing = nullptr;
    EXPECT_EQ(logOf([&] {
                  LogUtils::print(std::string("text"));
                  LogUtils::print(nothing);
                  LogUtils::i(nothing, {"F", 1, 2, "f"});
                  LogUtils::print(true);
                  LogUtils::print(-12);
                  for (const double number : {5.0, 0.1, 1e5, -123456789.0, 1e15, 0.0001, 1e16, 1e21, 0.00001})
                      LogUtils::print(number);
                  LogUtils::print(2.5F);
              }),
              "text\nnil\n [\u2139\uFE0F] INFO[F]:1 2 f -> nil\ntrue\n-12\n"
              "5.0\n0.1\n100000.0\n-123456789.0\n1000000000000000.0\n0.0001\n1e+16\n1e+21\n1e-05\n2.5\n");
}

// A line with its date, of a call that names no site.
std::string datedLine() {
    LogUtils::setLoggingEnabled(true);
    ::testing::internal::CaptureStdout();
    LogUtils::w("x");
    return ::testing::internal::GetCapturedStdout();
}

TEST_F(Log, OpensWithTheDateOnTheTwelveHourClock) {
    EXPECT_THAT(datedLine(),
                ::testing::MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2} (0[1-9]|1[0-2]):[0-9]{2}:[0-9]{5} .*"
                                        "WARNING.LogUtilsTests.cpp.:.*x\n"));
}

TEST_F(Log, WritesOnWithoutADateWhenTheFormatIsInvalid) {
    LogUtils::setDateFormat("yyyy T");
    EXPECT_THAT(datedLine(), ::testing::MatchesRegex("(.*\n)*.*Invalid date format \"yyyy T\"\n.*-> x\n"));
}

}  // namespace
}  // namespace torvel
