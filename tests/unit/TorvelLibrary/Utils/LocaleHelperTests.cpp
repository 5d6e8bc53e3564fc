#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/UserStorageHelper.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "support/StoreTest.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

// Before the host, which reads the preferred languages.
struct PrefersFrench {
    PrefersFrench() { ::setenv("LANGUAGE", "de:fr", 1); }
};

struct Localisation : private PrefersFrench, testing::HostFixture {
    // A look-up of "key" in a bundle beside the host's, by the resources that exist.
    std::string lookUp() const {
        return Bundle::at(directory() / "other")->localizedString("key", "value", "T");
    }
    void addTable(const std::string& folder, const std::string& text) const {
        addResource(folder + "/T.strings", "key = \"" + text + "\";");
    }
};

TEST_F(Localisation, WithoutTheSwitchABundleAnswersInThePreferredLanguage) {
    std::filesystem::create_directory(directory() / "other");
    EXPECT_EQ(lookUp(), "value");
    addTable("other", "root");
    EXPECT_EQ(lookUp(), "root");
    addTable("other/en.lproj", "english");
    EXPECT_EQ(lookUp(), "english");
    addTable("other/fr.lproj", "french");
    EXPECT_EQ(lookUp(), "french");
    const Bundle other = *Bundle::at(directory() / "other");
    EXPECT_EQ(other.localizedString("absent", std::nullopt, "T"), "absent");
    EXPECT_EQ(other.localizedString("key", std::nullopt), "key") << "another table";
}

TEST_F(Localisation, AMalformedTableIsReportedOnceAndCountsAsAbsent) {
    addResource("other/T.strings", "key = \"a\";\nkey = ;\n");
    const Bundle other = *Bundle::at(directory() / "other");
    EXPECT_THAT(logOf([&] {
                    EXPECT_EQ(other.localizedString("key", "value", "T"), "value");
                    EXPECT_EQ(other.localizedString("key", "value", "T"), "value");
                }),
                ::testing::MatchesRegex(" .*ERROR.* -> /.*/other/T.strings: line 2: .*\n"));
    addTable("third", "root");
    addResource("third/fr.lproj/T.strings", "key = ;");
    EXPECT_EQ(Bundle::at(directory() / "third")->localizedString("key", "value", "T"), "root");
}

TEST_F(Localisation, TheMainBundleComesFirstThenTheCallersThenNoLanguage) {
    const struct {
        const char* name;
        std::vector<std::string> folders;  // that hold the table
        const char* answer;
    } rows[] = {
        {"nothing", {}, "value"},
        {"no language", {"other"}, "other"},
        {"the caller's default language", {"other", "other/en.lproj"}, "other/en.lproj"},
        {"the caller's language", {"other", "other/en.lproj", "other/fr.lproj"}, "other/fr.lproj"},
        {"the host's root does not count", {".", "other"}, "other"},
        {"the host's default language", {"en.lproj", "other/fr.lproj"}, "en.lproj"},
        {"the host's language", {"en.lproj", "fr.lproj", "other/fr.lproj"}, "fr.lproj"},
    };
    LocaleHelper::doTheSwizzling();
    LocaleHelper::setAppleLanguageTo("fr-CA");
    for (const auto& row : rows) {
        std::filesystem::remove_all(directory());
        std::filesystem::create_directories(directory() / "other");
        for (const std::string& folder : row.folders) addTable(folder, folder);
        Bundle::setMain(directory());
        EXPECT_EQ(lookUp(), row.answer) << row.name;
    }
    // An answer equal to the key counts as none.
    addResource("fr.lproj/T.strings", "key = key;");
    Bundle::setMain(directory());
    EXPECT_EQ(lookUp(), "other/fr.lproj");
    addTable("fr.lproj", "host");
    Bundle::setMain(directory());
    EXPECT_EQ(lookUp(), "host");
    LocaleHelper::doTheSwizzling();
    EXPECT_EQ(lookUp(), "other/fr.lproj") << "a second call takes the switch out";
}

TEST_F(Localisation, StoresTheLanguageAndTheOneBefore) {
    EXPECT_EQ(LocaleHelper::currentAppleLanguage(), "en");
    LocaleHelper::setDefaultAppLanguageTo("sw");
    EXPECT_EQ(LocaleHelper::currentAppleLanguage(), "sw");
    EXPECT_EQ(LocaleHelper::getDefaultAppLanguage(), "sw");

    const auto stored = [] { return UserStorageHelper::stringArray("AppleLanguages"); };
    LocaleHelper::setAppleLanguageTo("fr");
    LocaleHelper::setAppleLanguageTo("de");
    EXPECT_EQ(stored(), (std::vector<std::string>{"de", "fr"}));
    LocaleHelper::setAppleLanguageTo("ar-SA");
    EXPECT_EQ(stored(), (std::vector<std::string>{"ar-SA", "de"}));
    UserStorageHelper::initialSetup("wallet");
    EXPECT_EQ(LocaleHelper::currentAppleLanguage(), "ar") << "whatever the default suite";
}

TEST_F(Localisation, ReadsWhatIsStored) {
    const std::pair<PropertyValue, const char*> rows[] = {
        {std::vector<std::string>{"ar-SA"}, "ar"},    {std::vector<std::string>{"zh-Hans-CN"}, "zh"},
        {std::vector<std::string>{"fr", "de"}, "fr"}, {std::vector<std::string>{"-x"}, ""},
        {std::vector<std::string>{}, "en"},           {"fr", "en"}};
    for (const auto& [value, language] : rows) {
        UserStorageHelper::save(value, "AppleLanguages");
        EXPECT_EQ(LocaleHelper::currentAppleLanguage(), language);
    }
}

TEST_F(Localisation, FollowsOtherProcessesAndAStoreThatIsMovedAside) {
    LocaleHelper::setAppleLanguageTo("fr");
    EXPECT_EQ(LocaleHelper::currentAppleLanguage(), "fr");
    EXPECT_TRUE(testing::inChild([] { return LocaleHelper::setAppleLanguageTo("ar"), true; }));
    EXPECT_EQ(LocaleHelper::currentAppleLanguage(), "ar");
    EXPECT_TRUE(testing::inChild([] { return SecureDefaults::shared().reset() == StoreStatus::ok; }));
    EXPECT_EQ(LocaleHelper::currentAppleLanguage(), "en");
    LocaleHelper::setAppleLanguageTo("fr");
    EXPECT_EQ(LocaleHelper::currentAppleLanguage(), "fr");
}

TEST_F(Localisation, TheLanguageSetsTheWritingDirection) {
    const std::pair<const char*, bool> rows[] = {{"ar", true}, {"fr", false}, {"he-IL", true},
                                                 {"ur", true}, {"en", false}, {"az-Arab", true},
                                                 {"?", false}};
    for (const auto& [language, rightToLeft] : rows) {
        LocaleHelper::setAppleLanguageTo(language);
        EXPECT_EQ(ScreenEnvironment::direction == ScreenEnvironment::Direction::rightToLeft, rightToLeft)
            << language;
    }
}

}  // namespace
}  // namespace torvel
