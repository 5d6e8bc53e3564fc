#include "TorvelLibrary/Utils/ColorUtils.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelTesting/HostFixture.h"

namespace torvel {
namespace {

struct ColorUtilsTest : testing::HostFixture {
    // Gives the two bundles a theme file each, or none; what the first use then logs.
    std::string load(const char* library, const char* app) {
        std::filesystem::create_directories(directory() / "library");
        Bundle::setLibrary(directory() / "library");
        if (library != nullptr) addResource("library/ColorTheme.plist", library);
        if (app != nullptr) addResource("ColorTheme.plist", app);
        return logOf([] { ColorUtils::sharedInstance(); });
    }
};

// Old text form, which says no more than it must.
constexpr char whole[] =
    "{ PrimaryColor = 111111; CircleRejectColor = 333333; CirlceDisabledColor = 666666; }";
constexpr char partial[] = "{ PrimaryColor = 444444; CircleDisabledColor = 555555; Other = (1); }";
constexpr char broken[] = "<plist><dict><key>PrimaryColor</key><integer>5</integer></dict></plist>";

struct Row {
    const char *name, *library, *app, *primary, *reject, *disabled;
    const char* logged;  // what must stand in the log; nothing else may when it is empty
};
void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

class ThemePrecedence : public ColorUtilsTest, public ::testing::WithParamInterface<Row> {};

TEST_P(ThemePrecedence, FollowsTheTable) {
    const Row& row = GetParam();
    const std::string log = load(row.library, row.app);
    const auto& theme = ColorUtils::sharedInstance().theme;
    EXPECT_EQ(theme ? theme->primaryColor : "none", row.primary);
    EXPECT_EQ(theme ? theme->circleRejectColor : "none", row.reject);
    EXPECT_EQ(theme ? theme->circleDisabledColor : "none", row.disabled);
    EXPECT_NE(log.find(row.logged), log.npos) << log;
    EXPECT_EQ(log.empty(), *row.logged == 0);
}

INSTANTIATE_TEST_SUITE_P(
    , ThemePrecedence,
    ::testing::Values(
        Row{"both", whole, partial, "444444", "CC4339", "76777A", ""},
        Row{"appOnly", nullptr, partial, "444444", "CC4339", "76777A",
            "ERROR[ColorUtils]:36 23 loadDefaultTheme() -> Default Color Theme plist Not Found In "
            "Framework\n"},
        Row{"libraryOnly", whole, nullptr, "111111", "333333", "666666",
            "ERROR[ColorUtils]:47 23 loadAppTheme() -> Default Color Theme plist Not Found In App\n"},
        Row{"neither", nullptr, nullptr, "none", "none", "none",
            "Resource named ColorTheme not found at bundle.\n"},
        Row{"wrongType", whole, broken, "111111", "333333", "666666",
            "ERROR[ColorUtils]:63 27 setThemeFromPlist(_:) -> The colour \"PrimaryColor\" is not a "
            "string.\n"},
        Row{"noPropertyList", whole, "{", "111111", "333333", "666666",
            "ERROR[ColorUtils]:63 27 setThemeFromPlist(_:) -> "},
        Row{"noDictionary", nullptr, "(1)", "none", "none", "none", "dictionary at its root"}),
    [](const auto& row) { return row.param.name; });

TEST_F(ColorUtilsTest, TheLibrarysOwnFileSaysEveryColour) {
    const auto list = PropertyList::parse(
        Data(readFile((Bundle::library().directory() / "ColorTheme.plist").string()).value()));
    ASSERT_TRUE(list);
    for (const ColorDAO::Field& field : ColorDAO::fields())
        EXPECT_TRUE(list.value().dictionary()->contains(field.key)) << field.key;
}

}  // namespace
}  // namespace torvel
