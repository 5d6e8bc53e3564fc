#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/Locale.h"

#include <cstdlib>
#include <fstream>
#include <thread>

#include <gtest/gtest.h>

namespace torvel {
namespace {

namespace fs = std::filesystem;

struct BundleTest : testing::Test {
    BundleTest() {
        std::string pattern = fs::temp_directory_path() / "torvel-bundle-XXXXXX";
        m_directory = mkdtemp(pattern.data());
    }
    ~BundleTest() override { fs::remove_all(m_directory); }

    fs::path add(const fs::path& file) const {
        fs::create_directories((m_directory / file).parent_path());
        std::ofstream(m_directory / file) << "x";
        return m_directory / file;
    }

    fs::path m_directory;
};

TEST_F(BundleTest, FindsResourcesInRootThenLanguage) {
    setenv("LANGUAGE", "de:fr_CA", 1);
    const fs::path root = add("both.txt"), french = add("fr.lproj/only.txt"), deep = add("sub folder/x.der");
    add("fr.lproj/both.txt");
    add("en.lproj/english.txt");
    add("Module.bundle/x");
    const Bundle bundle = *Bundle::at(m_directory);
    const struct {
        const char *name, *type;
        std::optional<std::string> path;
    } rows[] = {
        {"both", "txt", root},
        {"both.txt", "", root},
        {"only", "txt", french},
        {"english", "txt", std::nullopt},
        {"sub folder/x", "der", deep},
        {"Module", "bundle", m_directory / "Module.bundle"},
        {"both", "der", std::nullopt},
        {"", "", std::nullopt},
        {"../fr.lproj/only", "txt", std::nullopt},
        {"fr.lproj/../both", "txt", std::nullopt},
        {"..", "", std::nullopt},
        {"/etc/passwd", "", std::nullopt},
    };
    for (const auto& row : rows) EXPECT_EQ(bundle.path(row.name, row.type), row.path) << row.name;
    EXPECT_FALSE(bundle.path(std::string_view("both.txt\0x", 10), ""));
    EXPECT_EQ(bundle.url("sub folder/x", "der")->path(), deep);
    EXPECT_FALSE(bundle.url("x", "der"));
}

TEST_F(BundleTest, LanguageFallsBackToItsBaseThenEnglish) {
    setenv("LANGUAGE", "zh_Hant_HK", 1);
    const fs::path english = add("a/en.lproj/x"), base = add("b/zh.lproj/x"),
                   script = add("c/zh-Hant.lproj/x"), exact = add("d/zh_Hant_HK.lproj/x");
    add("d/zh.lproj/x");
    const auto found = [this](const char* bundle) { return Bundle::at(m_directory / bundle)->path("x", ""); };
    EXPECT_EQ(found("a"), english);
    EXPECT_EQ(found("b"), base);
    EXPECT_EQ(found("c"), script);
    EXPECT_EQ(found("d"), exact);
}

TEST_F(BundleTest, OneBundleByAnyNameOfItsDirectory) {
    fs::create_directory(m_directory / "Host.bundle");
    fs::create_symlink(m_directory / "Host.bundle", m_directory / "link");
    const std::optional<Bundle> bundle = Bundle::at(m_directory / "Host.bundle/");
    EXPECT_EQ(bundle->identifier(), "Host.bundle");
    EXPECT_EQ(bundle, Bundle::at(m_directory / "link/../link"));
    EXPECT_FALSE(bundle == Bundle::at(m_directory));
    EXPECT_FALSE(Bundle::at(m_directory / "none"));
}

TEST_F(BundleTest, MainAndLibraryCanBeReplacedAtAnyTime) {
    setenv("TORVEL_MAIN_BUNDLE", m_directory.c_str(), 1);
    setenv("TORVEL_LIBRARY_BUNDLE", "/usr/share", 1);
    EXPECT_EQ(Bundle::main(), *Bundle::at(m_directory));
    EXPECT_EQ(Bundle::main().identifier(), "foundation_tests");
    EXPECT_EQ(Bundle::library(), *Bundle::at("/usr/share"));
    std::thread reader([] {
        for (int i = 0; i < 1000; ++i) EXPECT_FALSE(Bundle::main().directory().empty());
    });
    for (int i = 0; i < 100; ++i) Bundle::setMain("/usr", "org.example.wallet");
    Bundle::setLibrary("/tmp");
    reader.join();
    EXPECT_EQ(Bundle::main().directory(), "/usr");
    EXPECT_EQ(Bundle::main().identifier(), "org.example.wallet");
    EXPECT_EQ(Bundle::library(), *Bundle::at("/tmp"));
}

TEST(Bundle, DefaultsAreBesideTheExecutableAndInTheSourceTree) {
    unsetenv("TORVEL_MAIN_BUNDLE");
    unsetenv("TORVEL_LIBRARY_BUNDLE");
    const fs::path programs = fs::read_symlink("/proc/self/exe").parent_path();
    EXPECT_EQ(Bundle::main().directory(), programs / "Resources");
    EXPECT_TRUE(fs::is_directory(Bundle::library().directory()));
}

// The cases run in one process each, so that what is read once can differ.
struct LocaleCase {
    const char *name, *language, *all, *messages, *lang, *identifier;
    std::vector<std::string> languages;
    friend void PrintTo(const LocaleCase& row, std::ostream* out) { *out << row.name; }
};

class LocaleOfEnvironment : public testing::TestWithParam<LocaleCase> {};

TEST_P(LocaleOfEnvironment, IsReadAsPOSIXNamesIt) {
    const LocaleCase& row = GetParam();
    setenv("LANGUAGE", row.language, 1);
    setenv("LC_ALL", row.all, 1);
    setenv("LC_MESSAGES", row.messages, 1);
    setenv("LANG", row.lang, 1);
    EXPECT_EQ(Locale::current().identifier(), row.identifier);
    EXPECT_EQ(Locale::preferredLanguages(), row.languages);
}

INSTANTIATE_TEST_SUITE_P(
    Table, LocaleOfEnvironment,
    testing::Values(LocaleCase{"unset", "", "", "", "", "en_US", {"en-US"}},
                    LocaleCase{"c", "", "C.UTF-8", "", "fr_FR", "en_US", {"en-US"}},
                    LocaleCase{"posix", "", "", "", "POSIX", "en_US", {"en-US"}},
                    LocaleCase{"codeset", "", "", "", "fr_CA.UTF-8", "fr_CA", {"fr-CA"}},
                    LocaleCase{"modifier", "", "", "", "de_DE@euro", "de_DE", {"de-DE"}},
                    LocaleCase{"allWins", "", "ar_EG", "de", "fr", "ar_EG", {"ar-EG"}},
                    LocaleCase{"messages", "", "", "de", "fr_FR", "fr_FR", {"de"}},
                    LocaleCase{
                        "list", "fr_CA::en:fr_CA", "", "", "en_US", "en_US", {"fr-CA", "en", "en-US"}}),
    [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace torvel
