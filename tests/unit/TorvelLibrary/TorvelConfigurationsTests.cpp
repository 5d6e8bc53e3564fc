#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelTesting/HostFixture.h"

#include <map>

namespace torvel {
namespace {

// The library's own bundle is the host's directory here; each case reads the values for the first time.
struct Configurations : testing::HostFixture {
    Configurations() { Bundle::setLibrary(directory()); }
};

TEST_F(Configurations, WithoutATableTextsAreTheirKeysAndLengthsTheirFallbacks) {
    const std::pair<const char*, const std::string&> texts[] = {
#define TORVEL_TEXT(NAME, KEY) {KEY, TorvelConfigurations::NAME()},
#define TORVEL_NOTHING(...)
        TORVEL_CONFIGURATIONS(TORVEL_TEXT, TORVEL_NOTHING, TORVEL_NOTHING)};
#undef TORVEL_TEXT
    for (const auto& [key, value] : texts) EXPECT_EQ(value, key);

    const std::pair<const char*, std::int64_t> lengths[] = {
#define TORVEL_INTEGER(NAME, KEY, FALLBACK) {#NAME, TorvelConfigurations::NAME()},
        TORVEL_CONFIGURATIONS(TORVEL_NOTHING, TORVEL_INTEGER, TORVEL_NOTHING)};
#undef TORVEL_INTEGER
#undef TORVEL_NOTHING
    const std::map<std::string, std::int64_t> not10 = {
        {"pinLength", 4}, {"otpLength", 6}, {"emailIdLength", 200}};
    for (const auto& [name, value] : lengths)
        EXPECT_EQ(value, not10.contains(name) ? not10.at(name) : 10) << name;
    EXPECT_FALSE(TorvelConfigurations::isCurrencyCodePrefix());
    EXPECT_EQ(Utils::getDocumentIdLength(), 0) << "a length kept as a text has no fallback";
    EXPECT_EQ(Utils::getDebitPINLength(), 4);
    EXPECT_EQ(Constants::sdkBundle(), Bundle::library());
}

TEST_F(Configurations, AreReadOnceFromTheTable) {
    const auto table =
        addResource("en.lproj/Configurations.strings",
                    R"(torvel_pin_length = 6; torvel_otp_length = "-3"; torvel_amount_length = "6 ";
                       torvel_username_length = six; torvel_emailid_length = ""; torvel_mobileno_length = "+7";
                       torvel_loginid_length = 99999999999999999999; torvel_currency_prefix = true;
                       torvel_document_length = 12; torvel_pin_regex = "";)");
    EXPECT_EQ(TorvelConfigurations::pinLength(), 6);
    EXPECT_EQ(TorvelConfigurations::otpLength(), -3);
    EXPECT_EQ(TorvelConfigurations::amountLength(), 10);
    EXPECT_EQ(TorvelConfigurations::userNameLength(), 10);
    EXPECT_EQ(TorvelConfigurations::emailIdLength(), 200);
    EXPECT_EQ(TorvelConfigurations::loginIdLength(), 10);
    EXPECT_EQ(TorvelConfigurations::mobileNoLength(), 7);
    EXPECT_TRUE(TorvelConfigurations::isCurrencyCodePrefix());
    EXPECT_EQ(TorvelConfigurations::pinRegEx(), "");
    EXPECT_EQ(Utils::getDocumentIdLength(), 12);
    std::filesystem::remove(table);
    Bundle::setLibrary(directory());
    EXPECT_EQ(Utils::getDebitPINLength(), 6);
}

TEST_F(Configurations, TheHostOverridesThemInEnglishOnceTheSwitchIsInstalled) {
    std::filesystem::create_directory(directory() / "library");
    addResource("library/Configurations.strings",
                "torvel_pin_regex = library; torvel_amount_regex = library; torvel_currency_prefix = True;");
    addResource("en.lproj/Configurations.strings", "torvel_pin_regex = host;");
    addResource("fr.lproj/Configurations.strings",
                "torvel_pin_regex = french; torvel_amount_regex = french;");
    Bundle::setLibrary(directory() / "library");
    LocaleHelper::doTheSwizzling();
    LocaleHelper::setAppleLanguageTo("fr");
    EXPECT_EQ(Utils::getDebitPINRegex(), "host");
    EXPECT_EQ(Utils::getAmountRegex(), "library");
    EXPECT_EQ(Utils::getMobileNoRegex(), "torvel_mobileno_regex");
    EXPECT_FALSE(TorvelConfigurations::isCurrencyCodePrefix()) << "a flag is exactly true or false";
}

}  // namespace
}  // namespace torvel
