#include "TorvelPlatform/uikit/ImageSet.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

using Style = ScreenEnvironment::Style;

TEST(ImageSet, GivesTheFileForTheAppearanceAndTheScreen) {
    const std::string set = R"({"images":[{"idiom":"universal","filename":"one","scale":"1x"},
        {"idiom":"universal","filename":"three","scale":"3x"},{"idiom":"universal","filename":"two","scale":"2x"},
        {"idiom":"universal","filename":"night","scale":"2x",
         "appearances":[{"appearance":"luminosity","value":"dark"}]},
        {"idiom":"ipad","filename":"pad"},{"idiom":"universal","scale":"1x"}]})";
    const struct {
        const char* name;
        std::string contents;
        Style style;
        double scale;
        const char* file;
    } rows[] = {
        {"plain screen", set, Style::light, 1, "one"},
        {"between two", set, Style::light, 1.5, "two"},
        {"finest", set, Style::light, 4, "three"},
        {"dark wins over scale", set, Style::dark, 1, "night"},
        {"no scale", R"({"images":[{"idiom":"universal","filename":"a.png"}]})", Style::dark, 3, "a.png"},
        {"phones", R"({"images":[{"idiom":"ipad","filename":"pad"},{"idiom":"iphone","filename":"a"}]})",
         Style::light, 1, "a"},
        {"any device before phones",
         R"({"images":[{"idiom":"iphone","filename":"a"},{"idiom":"universal","filename":"b"}]})",
         Style::light, 1, "b"},
        {"a path", R"({"images":[{"idiom":"universal","filename":"../a.png"}]})", Style::light, 1, ""},
        {"empty", R"({"images":[]})", Style::light, 1, ""},
        {"no object", "[", Style::light, 1, ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(imageOfSet(row.contents, row.style, row.scale).value_or(ImageSetFile{}).name, row.file)
            << row.name;
}

}  // namespace
}  // namespace torvel
