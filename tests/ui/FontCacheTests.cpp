#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelTesting/HostFixture.h"

#include <regex>
#include <set>

namespace torvel {
namespace {

struct Sizes final : FontSizesDependency {
    double getTitleSize() const override { return 20; }
};

class FontCacheTest : public testing::HostFixture {
  protected:
    FontCacheTest() { TorvelLibraryBuilder().build(); }

    // A font file of the host, with one of the tests' faces.
    void ship(const std::string& file, const std::string& style) {
        addResource(file + ".ttf", readFile(TORVEL_TEST_FACES "/" + style + ".ttf").value().raw());
    }
    // What went wrong while a font was fetched: the site and the message of each line, without numbers.
    template <class Fetch>
    static std::string faults(Fetch fetch) {
        return std::regex_replace(logOf(fetch), std::regex(" \\[‼️\\] ERROR\\[(\\w+)\\]:\\d+ \\d+ "),
                                  "$1 ");
    }
};

std::string missing(const std::string& file, const std::string& operation) {
    return "Extenstions getPathURLFromBundle(_:bundle:) -> Resource named " + file +
           " not found at bundle.\nUtils loadFontName(for:) -> Could not load font file\nFontCache " +
           operation + " -> " + file + " font name is not found\n";
}

TEST_F(FontCacheTest, EveryGetterTakesItsOwnWeightAndSize) {
#define TORVEL_ROW(WEIGHT, STYLE, SIZE) \
    {#WEIGHT, #STYLE, FontSizesDependency().SIZE(), FontCache::get##WEIGHT##STYLE##Font},
#define TORVEL_ROWS(WEIGHT, SUFFIX) TORVEL_FONT_STYLES(TORVEL_ROW, WEIGHT)
    struct Row {
        std::string weight, style;
        double size;
        const UIFont& (*get)();
    };
    ship("en_light", "Light");
    ship("en_medium", "Medium");
    ship("en_regular", "Regular");
    ship("en_bold", "Bold");
    ship("en_semi_bold", "SemiBold");
    const Row rows[] = {TORVEL_FONT_WEIGHTS(TORVEL_ROWS)};
    ScreenEnvironment::widthInPoints = 414;
    std::set<const UIFont*> fonts;
    for (const Row& row : rows) {
        const bool isOdd = row.weight == "Regular" && row.style == "Small12";
        EXPECT_EQ(row.get(), UIFont("TorvelBox-" + (isOdd ? "Medium" : row.weight), 414 * (row.size / 375.0)))
            << row.weight << row.style;
        fonts.insert(&row.get());
    }
    EXPECT_EQ(fonts.size(), 70);
    EXPECT_DOUBLE_EQ(FontCache::getBoldTitle16Font().pointSize(), 17.664);
    EXPECT_EQ(FontCache::getLightFontCustomSize(12), UIFont("TorvelBox-Light", 12));
}

TEST_F(FontCacheTest, SizesComeFromTheProviderOnceAndFromTheScreen) {
    ship("en_bold", "Bold");
    ship("Poppins-Bold", "SemiBold");
    ScreenEnvironment::widthInPoints = 375;
    EXPECT_EQ(FontCache::getBoldHeadline22Font().pointSize(), 22);
    TorvelLibrary::sharedInstance()->fontSizesDependency = std::make_shared<Sizes>();
    EXPECT_EQ(FontCache::getBoldTitleFont().pointSize(), 20);
    EXPECT_EQ(FontCache::getBoldHeadlineFont().pointSize(), 22);
    EXPECT_EQ(FontCache::getBoldPoppinFont(), UIFont("TorvelBox-SemiBold", 20));
    ScreenEnvironment::widthInPoints = 414;
    TorvelLibrary::sharedInstance()->fontSizesDependency = std::make_shared<FontSizesDependencyComponent>();
    EXPECT_EQ(FontCache::getBoldTitleFont().pointSize(), 20);
    EXPECT_EQ(FontCache::getPoppinBoldCustomSize(9.5), UIFont("TorvelBox-SemiBold", 9.5));
}

TEST_F(FontCacheTest, FallsBackByLanguageThenToTheSystem) {
    LocaleHelper::setAppleLanguageTo("fr-CA");
    const auto get = FontCache::getRegularTitleFont;
    EXPECT_EQ(faults([&] { EXPECT_EQ(get(), UIFont("DejaVuSans", 15)); }),
              missing("fr_regular", "getRegularFont()") + missing("en_regular", "getRegularFont()"));
    EXPECT_EQ(faults(get), "");  // kept, though it is none of the host's

    ship("ar_regular", "Regular");
    ship("de_regular", "Bold");
    LocaleHelper::setAppleLanguageTo("ar");
    EXPECT_EQ(faults([&] { EXPECT_EQ(get().fontName(), "TorvelBox-Regular"); }), "");
    LocaleHelper::setDefaultAppLanguageTo("de");
    LocaleHelper::setAppleLanguageTo("fr");
    EXPECT_EQ(get().fontName(), "DejaVuSans");
    EXPECT_EQ(faults([] { EXPECT_EQ(FontCache::getRegularSmallFont().fontName(), "TorvelBox-Bold"); }),
              missing("fr_regular", "getRegularFont()"));
    EXPECT_EQ(
        faults([] { FontCache::getSemiBoldPoppinFont(); }),
        missing("Poppins-SemiBold", "getSemiBoldPoppin()") + missing("de_semi_bold", "getSemiBoldPoppin()"));
}

TEST_F(FontCacheTest, ABrokenFileIsOneThatIsMissing) {
    addResource("en_medium.ttf", "no font");
    EXPECT_EQ(faults([] { FontCache::getMediumFontCustomSize(1); }).substr(0, 55),
              "Utils loadFontName(for:) -> Could not load font\nFontCac");
}

TEST_F(FontCacheTest, AFaceThatIsNotRegisteredStopsTheProcess) {
    std::string face = readFile(TORVEL_TEST_FACES "/Light.ttf").value().raw();
    for (std::size_t at = 0; (at = face.find("B\0o\0x\0-\0L", at, 9)) != face.npos;) face[at] = 'F';
    addResource("en_light.ttf", face);
    EXPECT_DEATH(FontCache::getLightTitleFont(), "TorvelFox-Light of en_light.ttf is not registered");
}

}  // namespace
}  // namespace torvel
