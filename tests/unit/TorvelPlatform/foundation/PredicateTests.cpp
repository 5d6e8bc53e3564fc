#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/foundation/Predicate.h"

#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace torvel {
namespace {

std::vector<std::string> reports;

void keepReports() {
    setDiagnosticSink(
        [](std::string_view message, const std::source_location&) { reports.emplace_back(message); });
}

TEST(Predicate, MatchesWholeTextsAndNothingElse) {
    keepReports();
    const struct {
        const char *pattern, *text;
        bool matches;
    } rows[] = {
        {"[0-9]+", "123", true},
        {"[0-9]+", "123a", false},
        {"[0-9]+", " 123", false},
        {"[0-9]+", "123\n", false},
        {"^[0-9]+$", "123\n", false},
        {"[0-9]+", "", false},
        {"[0-9]*", "", true},
        {"", "", true},
        {"a|ab", "ab", true},  // the first alternative that matches is not the whole text
        {"straße", "STRASSE", false},
        {"(?i)abc", "ABC", true},
        {"\\p{L}{3}", "äöü", true},
        {"\\d{2}", "٣٧", true},
        {"\u00E9", "e\u0301", false},  // not normalised
        {".", "👍", true},              // a scalar beyond the basic plane
        {"100%@ 'a\"", "100%@ 'a\"", true},
        {"a\uFFFDz", "a\xFFz", true},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Predicate::matches(row.pattern).evaluate(row.text), row.matches)
            << row.pattern << " on " << row.text;
    EXPECT_TRUE(reports.empty());
}

TEST(Predicate, AnInvalidPatternIsReportedOnceByName) {
    keepReports();
    for (int i = 0; i < 3; ++i) EXPECT_FALSE(Predicate::matches("([0-9]").evaluate("([0-9]"));
    EXPECT_EQ(reports,
              std::vector<std::string>{"Invalid regular expression \"([0-9]\": U_REGEX_MISMATCHED_PAREN"});
}

TEST(Predicate, AMatchWithoutEndIsGivenUp) {
    keepReports();
    const Predicate slow = Predicate::matches("(a+)+b"), deep = Predicate::matches("(.|\\s)*x");
    EXPECT_FALSE(slow.evaluate(std::string(40, 'a')));
    EXPECT_TRUE(slow.evaluate("aab")) << "the pattern stays in use";
    EXPECT_FALSE(deep.evaluate(std::string(4'000'000, 'a')));
    EXPECT_EQ(reports,
              (std::vector<std::string>{"Gave up the regular expression \"(a+)+b\": U_REGEX_TIME_OUT",
                                        "Gave up the regular expression \"(.|\\s)*x\": "
                                        "U_REGEX_STACK_OVERFLOW"}));
}

TEST(Predicate, ManyPatternsAndThreads) {
    const auto check = [] {
        for (int i = 0; i < 1000; ++i) {
            const std::string text = std::to_string(i);  // more than are kept
            EXPECT_TRUE(Predicate::matches(text + "x?").evaluate(text));
            EXPECT_FALSE(Predicate::matches("[0-9]+").evaluate(text + "-"));
            EXPECT_TRUE(Predicate::matches("[0-9]+").evaluate(text));
        }
    };
    std::thread other(check);
    check();
    other.join();
}

}  // namespace
}  // namespace torvel
