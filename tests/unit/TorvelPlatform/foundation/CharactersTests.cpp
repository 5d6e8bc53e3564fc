#include "TorvelPlatform/foundation/Characters.h"

#include <string>

#include <gtest/gtest.h>

namespace torvel {
namespace {

// After the examples of UAX 29.
TEST(Characters, AreGraphemeClusters) {
    const struct {
        const char* name;
        std::string text;
        std::size_t count;
        std::size_t firstTwo;  // bytes
    } rows[] = {
        {"empty", "", 0, 0},
        {"ASCII", "abc", 3, 2},
        {"CR LF", "\r\na\r\n", 3, 3},
        {"LF CR", "\n\ra", 3, 2},
        {"lone CR", "\r", 1, 1},
        {"combining accent", "ae\xCC\x81x", 3, 4},
        {"accent behind the last", "ab\xCC\x81", 2, 4},
        {"two bytes each", "äöü", 3, 4},
        {"flag", "🇲🇲🇲🇲a", 3, 16},
        {"family", "👨‍👩‍👧b", 2, 19},
        {"Burmese syllables", "ကို", 1, 9},
        {"Hangul jamo", "\xE1\x84\x80\xE1\x85\xA1\xE1\x86\xA8x", 2, 10},
        {"not UTF-8", "a\xFFz", 3, 2},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(characterCount(row.text), row.count) << row.name;
        EXPECT_EQ(characterPrefix(row.text, 2).length, row.firstTwo) << row.name;
        EXPECT_EQ(characterPrefix(row.text, 100).length, row.text.size()) << row.name;
        EXPECT_EQ(characterPrefix(row.text, 0).length, 0U) << row.name;
    }
}

}  // namespace
}  // namespace torvel
