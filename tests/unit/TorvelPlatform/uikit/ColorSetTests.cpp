#include "TorvelPlatform/foundation/Text.h"
#include "TorvelPlatform/uikit/ColorSet.h"
#include "TorvelTesting/HostFixture.h"

namespace torvel {
namespace {

using Style = ScreenEnvironment::Style;

// A colour set of one colour, and entries behind it. Apostrophes stand for quotes.
std::string setOf(const std::string& space, const std::string& components, const std::string& more = "") {
    const std::string color = "{'color-space':'" + space + "','components':{" + components + "}}";
    const std::string set = "{'colors':[{'idiom':'universal','color':" + color + "}" + more + "]}";
    return replacingOccurrences(set, "'", "\"");
}
std::string srgb(const std::string& r, const std::string& g, const std::string& b, const std::string& a) {
    return setOf("srgb", "'red':" + r + ",'green':" + g + ",'blue':" + b + ",'alpha':" + a);
}
std::string grey(const std::string& white) { return "'alpha':'1.0','white':'" + white + "'"; }

TEST(ColorSet, ReadsEveryNotation) {
    const struct {
        std::string name, contents;
        std::optional<UIColor::Components> expected;
    } rows[] = {{"fractions", srgb("'0.5'", "'1.000'", "'0.25'", "'0.75'"), {{0.5, 1, 0.25, 0.75}}},
                {"bytes", srgb("'51'", "'255'", "'1'", "'1'"), {{0.2, 1, 1 / 255.0, 1}}},
                {"hexadecimal", srgb("'0x33'", "'0xFF'", "'0X00'", "'1.0'"), {{0.2, 1, 0, 1}}},
                {"numbers", srgb("51", "0.5", "0", "1"), {{0.2, 0.5, 0, 1}}},
                {"grey", setOf("gray-gamma-22", grey("0.3")), {{0.3, 0.3, 0.3, 1}}},
                // As published with the sample conversions of CSS Color 4.
                {"beyond sRGB",
                 replacingOccurrences(srgb("1.0", "0.0", "0.0", "1.0"), "srgb", "display-p3"),
                 {{1.0930663624351615, -0.22674197356975417, -0.15013458093711934, 1}}},
                {"other space", setOf("cmyk", grey("1.0")), {}},
                {"no blue", setOf("srgb", "'red':1,'green':1,'alpha':1"), {}},
                {"no number", srgb("'0x'", "'1e999'", "'red'", "'1.0'"), {}},
                {"number too large", srgb("0", "0", "0", "1,'more':1e999"), {}},
                {"other device", replacingOccurrences(srgb("0", "0", "0", "1"), "universal", "watch"), {}},
                {"other kinds", R"({"colors":[{"idiom":"universal","color":[]}, 3]})", {}},
                {"cut", srgb("0", "0", "0", "1").substr(0, 60), {}}};
    for (const auto& row : rows) {
        const auto color = colorOfSet(row.contents, Style::light);
        ASSERT_EQ(color.has_value(), row.expected.has_value()) << row.name;
        if (!color) continue;
        EXPECT_NEAR(color->components()->red, row.expected->red, 1e-12) << row.name;
        EXPECT_NEAR(color->components()->green, row.expected->green, 1e-12) << row.name;
        EXPECT_NEAR(color->components()->blue, row.expected->blue, 1e-12) << row.name;
        EXPECT_EQ(color->components()->alpha, row.expected->alpha) << row.name;
    }
}

TEST(ColorSet, TakesTheAppearanceInForce) {
    const auto more = [](const std::string& appearance, const std::string& white) {
        return ",{'idiom':'universal','appearances':[{'appearance':" + appearance +
               "}],'color':{'color-space':'extended-gray','components':{" + grey(white) + "}}}";
    };
    const std::string contrast = more("'contrast','value':'high'", "0.9");
    const std::string dark = more("'luminosity','value':'dark'", "0.1");
    const std::string set = setOf("extended-gray", grey("0.5"), dark + contrast);
    EXPECT_EQ(colorOfSet(set, Style::light), UIColor(0.5, 0.5, 0.5));
    EXPECT_EQ(colorOfSet(set, Style::dark), UIColor(0.1, 0.1, 0.1));
    EXPECT_EQ(colorOfSet(setOf("extended-gray", grey("0.5"), contrast), Style::dark), UIColor(0.5, 0.5, 0.5));
}

struct NamedColor : testing::HostFixture {
    void add(const std::string& path, const std::string& white) {
        addResource(path + ".colorset/Contents.json", setOf("extended-gray", grey(white)));
    }
};

TEST_F(NamedColor, IsFoundInTheMainBundleThenInTheOtherElseDarkGrey) {
    add("Assets.xcassets/Both", "0.1");
    add("other/Assets.xcassets/Both", "0.2");
    add("other/Assets.xcassets/Group/Deep", "0.3");
    add("other/Assets.xcassets/Brand/Primary", "0.4");
    addResource("other/Assets.xcassets/Brand/Contents.json", R"({"properties":{"provides-namespace":true}})");
    addResource("other/Assets.xcassets/Broken.colorset/Contents.json", "{}");
    const Bundle other = *Bundle::at(directory() / "other");
    const std::pair<const char*, double> rows[] = {{"Both", 0.1},          {"Deep", 0.3},
                                                   {"Brand/Primary", 0.4}, {"Primary", 1.0 / 3},
                                                   {"../Deep", 1.0 / 3},   {"", 1.0 / 3}};
    for (const auto& [name, white] : rows)
        EXPECT_EQ(UIColor::initColor(name, other), UIColor(white, white, white)) << name;
    EXPECT_NE(logOf([&] { UIColor::initColor("Broken", other); }).find("gives no colour"), std::string::npos);
}

}  // namespace
}  // namespace torvel
