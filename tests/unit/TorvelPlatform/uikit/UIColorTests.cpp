#include "TorvelPlatform/uikit/UIColor.h"

#include <vector>

#include <gtest/gtest.h>

namespace torvel {
namespace {

TEST(UIColor, ReadsHexadecimalTextAsThePlatformsScannerDoes) {
    const std::pair<int, std::vector<const char*>> rows[] = {
        {0x0387D1,
         {"0387D1", "#0387D1", " \t#0387d1\n", "\u00A00387D1\u2028", "# 0387D1", "FF0387D1", "0x0387D1",
          "#0X0387D1", "000000000387D1", "0387D1G5"}},
        {0x000FFF, {"FFF"}},
        {0x000012, {"12G456"}},
        {0xFFFFFF, {"100000000", "FFFFFFFFFFFFFFFFFFFFFFFF"}},
        {0x000000, {"ZZZZZZ", "0xZZ", "", "#", "##0387D1", "-0387D1", "0x0x12"}}};
    for (const auto& [value, texts] : rows) {
        const UIColor color((value >> 16) / 255.0, ((value >> 8) & 255) / 255.0, (value & 255) / 255.0);
        for (const char* text : texts) EXPECT_EQ(UIColor::hexString(text), color) << text;
    }
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
