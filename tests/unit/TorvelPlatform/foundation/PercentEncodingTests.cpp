#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/PercentEncoding.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

// Expected texts are those of python3's urllib.parse.quote(text, safe="-._~!$&'()*+,;=:@/?").
TEST(PercentEncoding, EscapesWhatAQueryMayNotHold) {
    const char* const rows[][2] = {
        {"", ""},
        {"http://h/p?a=1&b=c d", "http://h/p?a=1&b=c%20d"},
        {"-._~!$&'()*+,;=:@/?", "-._~!$&'()*+,;=:@/?"},
        {"#[]%20\"<>\\^`{|}\n", "%23%5B%5D%2520%22%3C%3E%5C%5E%60%7B%7C%7D%0A"},
        {"\u00e9\U0001F600", "%C3%A9%F0%9F%98%80"},
    };
    for (const auto& [text, escaped] : rows) {
        EXPECT_EQ(addingPercentEncoding(text, CharacterSet::urlQueryAllowed()), escaped);
        EXPECT_EQ(removingPercentEncoding(escaped), text);
    }
    EXPECT_FALSE(addingPercentEncoding("\xC3", CharacterSet::urlQueryAllowed()));
    EXPECT_EQ(addingPercentEncoding("\u00e9%", CharacterSet::urlQueryAllowed().inverted()), "%C3%A9%");
}

TEST(PercentEncoding, MalformedEscapesDoNotDecode) {
    for (const char* text : {"%", "a%4", "%4g", "%g4", "%%41", "% 41", "%C3", "%ED%A0%80"})
        EXPECT_FALSE(removingPercentEncoding(text)) << text;
    EXPECT_EQ(removingPercentEncoding("%c3%A9+%2b"), "\u00e9++");
}

TEST(CharacterSet, HoldsTheCategoriesItIsNamedAfter) {
    const struct {
        const char* name;
        CharacterSet set;
        std::u32string in, out;
    } rows[] = {
        {"digits", CharacterSet::decimalDigits(), U"09\u0660\U0001D7FF", U"a\u00b2\u00bd"},
        {"letters", CharacterSet::letters(), U"aZ\u00e9\u0627\u0301\u4e00", U"1_ \u0660"},
        {"alphanumerics", CharacterSet::alphanumerics(), U"a1\u00b2\u2167\u0301", U"-_ \u20ac"},
        {"whitespaces", CharacterSet::whitespaces(), U" \t\u00a0\u3000", U"\n\r\u2028\u200b"},
        {"newlines too", CharacterSet::whitespacesAndNewlines(), U" \t\n\v\f\r\u0085\u2028\u2029",
         U"a\u200b\x1f"},
        {"given", CharacterSet::charactersIn("a\u00e9\xff"), U"a\u00e9\ufffd", U"\u00ffc"},
        {"range", CharacterSet::range(U'a', U'c'), U"abc", U"`d"},
        {"union", CharacterSet::range(U'a', U'b').unionWith(CharacterSet::charactersIn("\u00e9")),
         U"ab\u00e9", U"c"},
        {"inverted", CharacterSet::decimalDigits().inverted(), U"a\U0010FFFF", U"5"},
    };
    for (const auto& row : rows) {
        for (const char32_t c : row.in) EXPECT_TRUE(row.set.contains(c)) << row.name << ' ' << unsigned(c);
        for (const char32_t c : row.out) EXPECT_FALSE(row.set.contains(c)) << row.name << ' ' << unsigned(c);
    }
    EXPECT_FALSE(CharacterSet::letters().contains(0xFFFFFFFF));
}

}  // namespace
}  // namespace torvel
