#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/Characters.h"
#include "TorvelPlatform/foundation/Text.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

TEST(Text, ReadsPlainDecimalNumbers) {
    const std::pair<const char*, double> rows[] = {
        {"1234.5", 1234.5}, {"-0.5", -0.5}, {"+5", 5},  {"5.", 5},     {".5", 0.5},
        {"1e3", 1000},      {"1E-2", 0.01}, {"007", 7}, {"1e-400", 0},
    };
    for (const auto& [text, number] : rows) EXPECT_EQ(decimalNumber(text), number) << text;
    using namespace std::string_view_literals;
    for (const auto text :
         {""sv,     "+"sv,         "."sv,     "e5"sv,    "5e"sv,     "+-5"sv,   "++5"sv,  " 5"sv,
          "5 "sv,   "5\0"sv,       "1,000"sv, "1 000"sv, "12abc"sv,  "1.2.3"sv, "0x10"sv, "inf"sv,
          "+inf"sv, "-infinity"sv, "nan"sv,   "1e400"sv, "-1e400"sv, "٥"sv})
        EXPECT_EQ(decimalNumber(text), std::nullopt) << text;
}

TEST(Text, ReplacesLiterally) {
    EXPECT_EQ(replacingOccurrences("a.b.c", ".", "::"), "a::b::c");
    EXPECT_EQ(replacingOccurrences("aaa", "aa", "a"), "aa");
    EXPECT_EQ(replacingOccurrences("abc", "", "x"), "abc");
    EXPECT_EQ(removingOccurrences("aabb", "ab"), "ab");
}

TEST(Text, UpperCaseIsOfNoLanguage) {
    setenv("LC_ALL", "tr_TR", 1);
    EXPECT_EQ(uppercased("iß\u0131é\U0001F600"), "ISSIÉ\U0001F600");
}

TEST(Text, TrimsScalarsOfASet) {
    const CharacterSet& spaces = CharacterSet::whitespaces();
    EXPECT_EQ(spaces.trimming("\u00A0\t a b\u202F "), "a b");
    EXPECT_EQ(spaces.trimming(" \u200F1\n"), "\u200F1\n") << "neither a mark nor a line feed is white space";
    EXPECT_EQ(spaces.trimming(" \u00A0"), "");
    EXPECT_EQ(spaces.trimming(""), "");
}

TEST(Text, TakesCharactersAndScalarsApart) {
    EXPECT_THAT(characters("a\r\ne\u0301🇲🇲"), ::testing::ElementsAre("a", "\r\n", "e\u0301", "🇲🇲"));
    EXPECT_EQ(unicodeScalars("ae\u0301👍"), U"ae\u0301👍");
    EXPECT_EQ(unicodeScalars("\xFF"), U"\uFFFD");
}

}  // namespace
}  // namespace torvel
