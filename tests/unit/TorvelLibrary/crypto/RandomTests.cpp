#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelLibrary/crypto/Random.h"

#include <algorithm>
#include <set>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace torvel {
namespace {

TEST(RandomText, HasTheAskedCharacters) {
    const std::string lower = "abcdefghijklmnopqrstuvwxyz",
                      all = lower + "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    const struct {
        const char* name;
        bool justLowerCase, whitespace;
        std::string characters;
    } rows[] = {
        {"lower case", true, false, lower},
        {"lower case despite white space", true, true, lower},
        {"letters and digits", false, false, all},
        {"with spaces", false, true, all + " "},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        for (const std::int64_t length : {-5, 0, 1, 5, 16, 17})
            EXPECT_EQ(AES256CBC::randomText(length, row.justLowerCase, row.whitespace).size(),
                      static_cast<std::size_t>(std::max<std::int64_t>(length, 0)));
        const std::string text = AES256CBC::randomText(30000, row.justLowerCase, row.whitespace);
        EXPECT_EQ(std::set<char>(text.begin(), text.end()),
                  std::set<char>(row.characters.begin(), row.characters.end()));
        EXPECT_EQ(text.find("  "), std::string::npos);
    }
    EXPECT_EQ(AES256CBC::generatePassword().size(), 16U);
    EXPECT_NE(AES256CBC::generatePassword(), AES256CBC::generatePassword());
}

// A digit is as likely as a lower-case letter: a third each, not in the proportion of 10 to 26. Twelve
// deviations wide.
TEST(RandomText, DrawsClassesAlike) {
    const std::string text = AES256CBC::randomText(30000, false, false);
    const auto share = [&](char first, char last) {
        return std::count_if(text.begin(), text.end(), [&](char c) { return first <= c && c <= last; });
    };
    EXPECT_NEAR(static_cast<double>(share('0', '9')), 10000, 1000);
    EXPECT_NEAR(static_cast<double>(share('A', 'Z')), 10000, 1000);
}

TEST(Random, StaysBelowItsBound) {
    for (const std::int64_t bound :
         {std::int64_t{1}, std::int64_t{3}, std::int64_t{1} << 31, std::int64_t{4294967295}}) {
        std::int64_t largest = 0;
        for (int i = 0; i < 1000; ++i) {
            const std::int64_t value = Random::generate(bound);
            ASSERT_TRUE(0 <= value && value < bound) << bound;
            largest = std::max(largest, value);
        }
        EXPECT_GE(largest, bound / 2) << bound;
    }
    EXPECT_EQ(Random::generate(0), 0);
}

// What a forked child draws; the child leaves at once.
std::string drawnByChild() {
    int ends[2];
    if (pipe(ends) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
        const std::string text = AES256CBC::randomText(32, false, false);
        _exit(write(ends[1], text.data(), text.size()) == 32 ? 0 : 1);
    }
    close(ends[1]);
    std::string text(32, '\0');
    if (read(ends[0], text.data(), text.size()) != 32) text = "nothing";
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return text;
}

TEST(Random, ForkedProcessesDrawTheirOwn) {
    AES256CBC::randomText(1, false, false);  // so that there is a buffer to inherit
    const std::set<std::string> texts = {drawnByChild(), drawnByChild(),
                                         AES256CBC::randomText(32, false, false)};
    EXPECT_EQ(texts.size(), 3U);
    for (const std::string& text : texts) EXPECT_EQ(text.size(), 32U);
}

}  // namespace
}  // namespace torvel
