#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelTesting/HostFixture.h"

#include <map>
#include <regex>

namespace torvel {
namespace {

struct Sizes final : FontSizesDependency {
    double getTitleSize() const override { return 20; }
};

struct FontCacheTest : testing::HostFixture {
    FontCacheTest() { TorvelLibraryBuilder().build(); }

    // A font file of the host, with one of the tests' faces.
    void ship(const std::string& file, const std::string& style) {
        addResource(file + ".ttf", readFile(TORVEL_TEST_FACES "/" + style + ".ttf").value().raw());
    }
    // What went wrong while a font was fetched: the site and the message of each line, without numbers.
    template <class Fetch>
    static std::string faults(Fetch fetch) {
        const std::regex site(" \\[‼️\\] ERROR\\[(\\w+)\\]:\\d+ \\d+ ");
        return std::regex_replace(logOf(fetch), site, "$1 ");
    }
};

std::string missing(const std::string& file, const std::string& operation) {
    return "Extenstions getPathURLFromBundle(_:bundle:) -> Resource named " + file +
           " not found at bundle.\nUtils loadFontName(for:) -> Could not load font file\nFontCache " +
           operation + " -> " + file + " font name is not found\n";
}

TEST_F(FontCacheTest, EveryGetterTakesItsOwnWeightAndSize) {
    const std::map<std::string, double> sizes = {
        {"Title16", 16},  {"SubTitle14", 14}, {"Smallest", 10},   {"Headline24", 24}, {"Small12", 12},
        {"Title", 15},    {"SubTitle", 13},   {"Small", 11},      {"Heading", 18},    {"Heading20", 20},
        {"Headline", 22}, {"Headline22", 22}, {"BigHeading", 35}, {"BigHeadline", 30}};
    ship("en_light", "Light"), ship("en_medium", "Medium"), ship("en_regular", "Regular");
    ship("en_bold", "Bold"), ship("en_semi_bold", "SemiBold");
    ScreenEnvironment::widthInPoints = 414;
    const auto expect = [&](const std::string& weight, const std::string& style, const UIFont& font) {
        const bool isOdd = weight == "Regular" && style == "Small12";
        EXPECT_EQ(font.fontName(), "TorvelBox-" + (isOdd ? "Medium" : weight)) << weight << style;
        EXPECT_DOUBLE_EQ(font.pointSize(), sizes.at(style) * 414 / 375) << weight << style;
    };
#define TORVEL_EXPECT(WEIGHT, STYLE, SIZE) expect(#WEIGHT, #STYLE, FontCache::get##WEIGHT##STYLE##Font());
#define TORVEL_EXPECT_ALL(WEIGHT, SUFFIX) TORVEL_FONT_STYLES(TORVEL_EXPECT, WEIGHT)
    TORVEL_FONT_WEIGHTS(TORVEL_EXPECT_ALL)
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
    addResource("Poppins-Medium.ttf", "no font");
    EXPECT_TRUE(faults(FontCache::getMediumPoppinFont)
                    .starts_with("Utils loadFontName(for:) -> Could not load font\n"));
    EXPECT_EQ(faults(FontCache::getSemiBoldPoppinFont), missing("Poppins-SemiBold", "getSemiBoldPoppin()") +
                                                            missing("de_semi_bold", "getSemiBoldPoppin()"));
}

TEST_F(FontCacheTest, AFaceThatIsNotRegisteredStopsTheProcess) {
    std::string face = readFile(TORVEL_TEST_FACES "/Light.ttf").value().raw();
    for (std::size_t at = 0; (at = face.find("B\0o\0x\0-\0L", at, 9)) != face.npos;) face[at] = 'F';
    addResource("en_light.ttf", face);
    EXPECT_DEATH(FontCache::getLightTitleFont(), "TorvelFox-Light of en_light.ttf is not registered");
}

}  // namespace
}  // namespace torvel
