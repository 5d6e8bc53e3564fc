#include "TorvelPlatform/uikit/ColorSet.h"
#include "TorvelTesting/HostFixture.h"

namespace torvel {
namespace {

using Style = ScreenEnvironment::Style;

std::string setOf(const std::string& color, const std::string& more = "") {
    return R"({"colors":[{"idiom":"universal","color":)" + color + "}" + more + "]}";
}
std::string srgb(const std::string& components, const std::string& space = "srgb") {
    return R"({"color-space":")" + space + R"(","components":)" + components + "}";
}

struct Row {
    const char* name;
    std::string contents;
    std::optional<UIColor::Components> expected;
};

TEST(ColorSet, ReadsEveryNotation) {
    const double byte = 128 / 255.0;
    const Row rows[] = {
        {"fractions",
         setOf(srgb(R"({"red":"0.500","green":"1.000","blue":"0.25","alpha":"0.750"})")),
         {{0.5, 1, 0.25, 0.75}}},
        {"bytes",
         setOf(srgb(R"({"red":"128","green":"255","blue":"1","alpha":"1"})")),
         {{byte, 1, 1 / 255.0, 1}}},
        {"hexadecimal",
         setOf(srgb(R"({"red":"0x80","green":"0xFF","blue":"0X00","alpha":"1.000"})")),
         {{byte, 1, 0, 1}}},
        {"numbers", setOf(srgb(R"({"red":128,"green":0.5,"blue":0,"alpha":1})")), {{byte, 0.5, 0, 1}}},
        {"grey", setOf(srgb(R"({"white":"0.300","alpha":"0.5"})", "gray-gamma-22")), {{0.3, 0.3, 0.3, 0.5}}},
        {"otherSpace", setOf(srgb(R"({"red":"1","green":"1","blue":"1","alpha":"1"})", "cmyk")), {}},
        {"missing", setOf(srgb(R"({"red":"1.0","green":"1.0","alpha":"1.0"})")), {}},
        {"noNumber", setOf(srgb(R"({"red":"0x","green":"1e999","blue":"red","alpha":"1.0"})")), {}},
        {"beyondNumbers", setOf(srgb(R"({"red":0,"green":0,"blue":0,"alpha":1,"more":1e999})")), {}},
        {"reference", setOf(R"({"platform":"ios","reference":"systemBlueColor"})"), {}},
        {"otherDevice", R"({"colors":[{"idiom":"watch","color":{}}]})", {}},
        {"kinds", R"({"colors":{"idiom":3}})", {}},
        {"cut", setOf("{}").substr(0, 20), {}}};
    for (const Row& row : rows) {
        const auto color = colorOfSet(row.contents, Style::light);
        EXPECT_EQ(color ? color->components() : std::nullopt, row.expected) << row.name;
    }
}

// The primary red of Display P3 in extended sRGB, as published with CSS Color 4's sample conversions.
TEST(ColorSet, TakesDisplayP3BeyondSRGB) {
    const auto color = colorOfSet(
        setOf(srgb(R"({"red":"1.000","green":"0.000","blue":"0.000","alpha":"1.000"})", "display-p3")),
        Style::light);
    ASSERT_TRUE(color);
    EXPECT_NEAR(color->components()->red, 1.0930663624351615, 1e-12);
    EXPECT_NEAR(color->components()->green, -0.22674197356975417, 1e-12);
    EXPECT_NEAR(color->components()->blue, -0.15013458093711934, 1e-12);
}

TEST(ColorSet, TakesTheAppearanceInForce) {
    const auto grey = [](const char* white, const char* appearance) {
        return std::string(R"(,{"idiom":"universal","appearances":[)") + appearance + R"(],"color":)" +
               srgb(std::string(R"({"alpha":"1.0","white":")") + white + "\"}", "gray-gamma-22") + "}";
    };
    const char *const dark = R"({"appearance":"luminosity","value":"dark"})",
                      *const contrast = R"({"appearance":"contrast","value":"high"})";
    const std::string any = srgb(R"({"white":"0.5","alpha":"1.0"})", "gray-gamma-22");
    const std::string set = setOf(any, grey("0.1", dark) + grey("0.9", contrast));
    EXPECT_EQ(colorOfSet(set, Style::light), UIColor(0.5, 0.5, 0.5));
    EXPECT_EQ(colorOfSet(set, Style::dark), UIColor(0.1, 0.1, 0.1));
    EXPECT_EQ(colorOfSet(setOf(any, grey("0.9", contrast)), Style::dark), UIColor(0.5, 0.5, 0.5));
}

class NamedColor : public testing::HostFixture {
  protected:
    // A set in the main bundle, or in the bundle "other" beside it.
    void add(const std::string& path, const char* white) {
        addResource(path + ".colorset/Contents.json",
                    setOf(srgb(std::string(R"({"alpha":"1.0","white":")") + white + "\"}", "extended-gray")));
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
