#include "TorvelPlatform/uikit/ImageFileEnd.h"
#include "TorvelPlatform/uikit/ImageSet.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

using Style = ScreenEnvironment::Style;

std::string entry(const std::string& file, const std::string& more) {
    return R"({"idiom":"universal","filename":")" + file + "\"" + more + "},";
}

TEST(ImageSet, GivesTheFileForTheAppearanceAndTheScreen) {
    const std::string dark = R"(,"appearances":[{"appearance":"luminosity","value":"dark"}])";
    const std::string set =
        R"({"images":[)" + entry("one", R"(,"scale":"1x")") + entry("three", R"(,"scale":"3x")") +
        entry("two", R"(,"scale":"2x")") + entry("night", dark + R"(,"scale":"2x")") +
        R"({"idiom":"ipad","filename":"pad"},)" + R"({"idiom":"universal","scale":"1x"}]})";
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
        {"a path", R"({"images":[{"idiom":"universal","filename":"../a.png"}]})", Style::light, 1, ""},
        {"empty", R"({"images":[]})", Style::light, 1, ""},
        {"no object", "[", Style::light, 1, ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(imageOfSet(row.contents, row.style, row.scale).value_or(ImageSetFile{}).name, row.file)
            << row.name;
}

TEST(ImageFileEnd, OfAJPEGIsTheMarkerAfterTheCodedData) {
    using namespace std::string_literals;
    const std::string start = "\xFF\xD8"s, end = "\xFF\xD9"s;
    const std::string thumbnail = "\xFF\xE1\0\x06"s + "\xFF\xD8\xFF\xD9";
    const std::string scan = "\xFF\xDA\0\x02"s + "ab\xFF\0cd\xFF\xD0"s;
    std::string scans;
    for (int i = 0; i <= 100; ++i) scans += scan;
    const struct {
        const char* name;
        std::string bytes;
        bool reaches;
    } rows[] = {
        {"whole", start + scan + end, true},
        {"more behind", start + scan + end + "more", true},
        {"fill bytes", start + scan + "\xFF" + end, true},
        {"two scans", start + scan + scan + end, true},
        {"cut in the scan", start + scan, false},
        {"the thumbnail's end", start + thumbnail + scan, false},
        {"cut in a segment's length", start + "\xFF\xE1\0"s, false},
        {"segment beyond the end", start + "\xFF\xE1\xFF\xFF" + end, false},
        {"endless work", start + scans + end, false},
        {"empty", "", false},
    };
    for (const auto& [name, bytes, reaches] : rows) EXPECT_EQ(reachesJPEGEnd(Data(bytes)), reaches) << name;
}

}  // namespace
}  // namespace torvel
