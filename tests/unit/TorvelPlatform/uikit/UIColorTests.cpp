#include "TorvelPlatform/uikit/UIColor.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

struct Row {
    const char* text;
    int red, green, blue;
};

TEST(UIColor, ReadsHexadecimalTextAsThePlatformsScannerDoes) {
    const Row rows[] = {{"0387D1", 0x03, 0x87, 0xD1},
                        {"#0387D1", 0x03, 0x87, 0xD1},
                        {" \t#0387d1\n", 0x03, 0x87, 0xD1},
                        {"# 0387D1", 0x03, 0x87, 0xD1},
                        {"FF0387D1", 0x03, 0x87, 0xD1},
                        {"0x0387D1", 0x03, 0x87, 0xD1},
                        {"#0X0387D1", 0x03, 0x87, 0xD1},
                        {"FFF", 0, 0x0F, 0xFF},
                        {"12G456", 0, 0, 0x12},
                        {"100000000", 0xFF, 0xFF, 0xFF},
                        {"000000000387D1", 3, 0x87, 0xD1},
                        {"ZZZZZZ", 0, 0, 0},
                        {"0xZZ", 0, 0, 0},
                        {"", 0, 0, 0},
                        {"#", 0, 0, 0},
                        {"##0387D1", 0, 0, 0},
                        {"-0387D1", 0, 0, 0},
                        {"0x0x12", 0, 0, 0},
                        {"\u00A00387D1\u2028", 3, 0x87, 0xD1}};
    for (const Row& row : rows)
        EXPECT_EQ(UIColor::hexString(row.text), UIColor(row.red / 255.0, row.green / 255.0, row.blue / 255.0))
            << row.text;
}

TEST(UIColor, ComparesExactlyAndAPatternEqualsNothing) {
    const UIColor color(0.1, 0.2, 0.3, 0.4);
    EXPECT_EQ(color, UIColor(0.1, 0.2, 0.3, 0.4));
    EXPECT_FALSE(color == UIColor(0.1, 0.2, 0.30000000000000004, 0.4));
    EXPECT_EQ(color.hazy(), UIColor(0.1, 0.2, 0.3, 0.75));
    const UIColor pattern = UIColor::patternImage(nullptr);
    EXPECT_FALSE(pattern == pattern);
    EXPECT_FALSE(pattern.translucent() == UIColor(0, 0, 0, 0.5));
    EXPECT_FALSE(pattern.components());
}

}  // namespace
}  // namespace torvel
