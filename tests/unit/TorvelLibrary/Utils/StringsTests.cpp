#include "TorvelLibrary/Utils/Optionals.h"
#include "TorvelLibrary/Utils/Strings.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelTesting/HostFixture.h"

#include <array>
#include <vector>

namespace torvel {
namespace {

class Strings : public testing::HostFixture {};

TEST_F(Strings, AreJoined) {
    EXPECT_EQ(String::format({"a", "", "b"}, String::hyphen), "a--b");
    EXPECT_EQ(String::format({}, "-"), String::empty);
}

TEST_F(Strings, HaveInitials) {
    const std::pair<const char*, const char*> rows[] = {
        {"ada  lovelace", "AL"},
        {"  ", ""},
        {" ada ", "A"},
        {"élan vital", "ÉV"},
        {"ßeta x", "SSX"},
        {"a\tb c", "AC"},
        {"e\u0301a 👨‍👩‍👧 x", "E\u0301👨‍👩‍👧X"}};
    for (const auto& [name, initials] : rows) EXPECT_EQ(getFirstCharacters(name), initials) << name;
}

TEST_F(Strings, AreFilteredByCharacters) {
    const CharacterSet digits = CharacterSet::decimalDigits(), letters = CharacterSet::letters();
    const struct {
        const char* text;
        std::vector<CharacterSet> sets;
        const char* kept;
    } rows[] = {
        {"a1-b2", {digits}, "12"},
        {"a1-b2", {digits, letters}, "a1b2"},
        {"a1-b2", {}, "a1-b2"},
        {"a١٢", {digits}, "١٢"},
        {"e\u0301!", {letters}, "e\u0301"},
        {"1\u0301\x32", {digits}, "2"},  // one character, whose accent is no digit
        {"", {digits}, ""},
    };
    for (const auto& row : rows) EXPECT_EQ(onlyCharacters(row.text, row.sets), row.kept) << row.text;
    EXPECT_EQ(onlyNumbers("+44 (0)20", digits), "44020");
    EXPECT_EQ(
        filterCharacters("a1-b2", {digits, letters},
                         [](const CharacterSet& set, char32_t scalar) { return !set.contains(scalar); }),
        "-");
}

TEST_F(Strings, AbsentValuesHaveStandIns) {
    EXPECT_EQ(safelyUnwrap(std::optional<std::string>()), "");
    EXPECT_EQ(safelyUnwrap(std::optional(7)), 7);
    const auto before = std::chrono::system_clock::now();
    EXPECT_GE(safelyUnwrap(std::optional<std::chrono::system_clock::time_point>()), before);
    const std::array numbers{1, 2, 3};
    EXPECT_EQ(safeIndex(numbers, 2), 3);
    for (const std::int64_t index : {std::int64_t{3}, std::int64_t{-1}, INT64_MIN, INT64_MAX})
        EXPECT_EQ(safeIndex(numbers, index), std::nullopt);
    EXPECT_EQ(safeIndex(std::vector<bool>{true}, 0), true);
}

TEST_F(Strings, NumbersAreReadInEnglish) {
    const std::pair<const char*, const char*> rows[] = {{"1,5", "1.5"},
                                                        {"1.50", "1.5"},
                                                        {"007", "7"},
                                                        {"1,000", "1"},
                                                        {"-0,5", "-0.5"},
                                                        {"-0", "-0"},
                                                        {"3\u066B75", "3.75"},
                                                        {"\u0663\u066B\u0667\u0665", "3.75"},
                                                        {"0.00005", "5e-05"},
                                                        {"9007199254740993", "9007199254740993"},
                                                        {"100000000000000000000", "1e+20"}};
    for (const auto& [typed, number] : rows) EXPECT_EQ(Utils::getEnglishNumber(typed), number) << typed;
    for (const char* typed : {"abc", "12abc", "1,000,000", "1 000", "", ",", "\u221E", "NaN", "0x10"})
        EXPECT_EQ(Utils::getEnglishNumber(typed), "") << typed;
}

TEST_F(Strings, RandomTextsAreDigits) {
    std::array<int, 10> counts{};
    const std::string text = Utils::getRandomNumericString(100000);
    ASSERT_EQ(text.size(), 100000U);
    for (const char digit : text) {
        ASSERT_TRUE(digit >= '0' && digit <= '9');
        ++counts[static_cast<std::size_t>(digit - '0')];
    }
    double chiSquare = 0;  // of nine degrees of freedom: above 50 once in ten million runs
    for (const int count : counts) chiSquare += (count - 10000.0) * (count - 10000.0) / 10000.0;
    EXPECT_LT(chiSquare, 50);
    EXPECT_NE(Utils::getRandomNumericString(40), Utils::getRandomNumericString(40));
    EXPECT_EQ(Utils::getRandomNumericString(0), "");
    EXPECT_DEATH(Utils::getRandomNumericString(-1), "negative length");
}

}  // namespace
}  // namespace torvel
