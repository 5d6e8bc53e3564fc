#include "TorvelLibrary/validation/CardUtils.h"
#include "TorvelTesting/HostFixture.h"

#include <chrono>
#include <map>
#include <random>

namespace torvel {
namespace {

class Cards : public testing::HostFixture {
  protected:
    Cards() { Bundle::setLibrary(directory()); }

    void configure(std::string_view table) { addResource("Configurations.strings", table); }

    const CardUtils& cards = CardUtils::sharedInstance();
};

// The schemes' public test numbers.
TEST_F(Cards, KnowTheCheckDigit) {
    const std::pair<const char*, bool> rows[] = {
        {"4111111111111111", true},
        {"4111111111111112", false},
        {"5555555555554444", true},
        {"378282246310005", true},
        {"30569309025904", true},
        {"6011111111111117", true},
        {"3530111333300000", true},
        {"3530111333300001", false},
        {"4222222222222", true},
        {"79927398713", true},
        {"79927398710", false},
        {"0", true},
        {"5", false},
        {"", false},
        {"00", true},
    };
    for (const auto& [number, valid] : rows) EXPECT_EQ(cards.validateCardNumber(number), valid) << number;
}

// Of the ten last digits exactly one is right, and it changes with any one digit before it.
TEST_F(Cards, TheCheckDigitCatchesEverySlip) {
    std::mt19937 random(7);
    for (int i = 0; i < 3000; ++i) {
        std::string number(1 + random() % 24, '0');
        for (char& digit : number) digit = static_cast<char>('0' + random() % 10);
        int valid = 0;
        for (number.back() = '0'; number.back() <= '9'; ++number.back())
            valid += cards.validateCardNumber(number) ? 1 : 0;
        ASSERT_EQ(valid, 1) << number;

        for (number.back() = '0'; !cards.validateCardNumber(number);) ++number.back();
        char& digit = number[random() % number.size()];
        digit = digit == '9' ? '0' : static_cast<char>(digit + 1);
        ASSERT_FALSE(cards.validateCardNumber(number)) << number;
    }
}

TEST_F(Cards, ANumberOfAnythingButDigitsStopsTheProcess) {
    for (const char* number : {"4111 1111", "4111-1111", "411a", "٤١١١", "1\u0301", "-1", "1\n"})
        EXPECT_DEATH(static_cast<void>(cards.validateCardNumber(number)), "digits only") << number;
}

// Each pattern alone makes its scheme's check true, and no other scheme's.
TEST_F(Cards, AnyPatternOfASchemeWillDo) {
    configure(
        "torvel_visa_regex = v1; torvel_visaValid_regex = v2;"
        "torvel_masterCard_regex = m1; torvel_masterCardShort_regex = m2;"
        "torvel_masterCardShorter_regex = m3; torvel_masterCardValid_regex = m4;"
        "torvel_americanExpress_regex = a1; torvel_americanExpressValid_regex = a2;"
        "torvel_americanExpress34_regex = a3; torvel_americanExpress37_regex = a4;"
        "torvel_dinersClub_regex = d1; torvel_dinersClubShort_regex = d2;"
        "torvel_dinersClubValid_regex = d3; torvel_discover_regex = s1;"
        "torvel_discoverShort_regex = s2; torvel_discoverValid_regex = s3;"
        "torvel_jcb_regex = j1; torvel_jcbShort_regex = j2; torvel_jcbValid_regex = j3;"
        "torvel_rupay_regex = r1; torvel_cardName_regex = n1;");
    using Check = bool (CardUtils::*)(std::string_view) const;
    struct Row {
        const char* name;
        Check check;
        char scheme;
        char patterns;
    };
    const Row rows[] = {
        {"Visa", &CardUtils::validateVisaTypeCard, 'v', '2'},
        {"MasterCard", &CardUtils::validateMasterTypeCard, 'm', '4'},
        {"American Express, without its 34 and 37", &CardUtils::validateAmericanExpressTypeCard, 'a', '2'},
        {"Diners Club", &CardUtils::validatityOfDinersClubTypeCard, 'd', '3'},
        {"Discover", &CardUtils::validatityOfDiscoverTypeCard, 's', '3'},
        {"JCB", &CardUtils::validatityOfJcbTypeCard, 'j', '3'},
        {"RuPay", &CardUtils::validateRupayCard, 'r', '1'},
        {"name", &CardUtils::validateCardName, 'n', '1'},
    };
    for (const Row& row : rows)
        for (const char scheme : std::string("vmadsjrn"))
            for (char pattern = '1'; pattern <= '4'; ++pattern)
                EXPECT_EQ((cards.*row.check)(std::string{scheme, pattern}),
                          scheme == row.scheme && pattern <= row.patterns)
                    << row.name << " " << scheme << pattern;
}

// The sample host's table, on the schemes' public test numbers.
TEST_F(Cards, TheSampleHostKnowsRealCards) {
    Bundle::setLibrary(TORVEL_SAMPLE_RESOURCES);
    const std::map<std::string, std::string> numbers = {
        {"4012888888881881", "V"}, {"5105105105105100", "M"}, {"2223003122003222", "M"},
        {"371449635398431", "A"},  {"38520000023237", "D"},   {"6011000990139424", "SR"},
        {"3566002020360505", "J"}, {"5085000000000000", "R"}, {"1234567890123456", ""},
    };
    for (const auto& [number, scheme] : numbers) {
        std::string found;
        if (cards.validateVisaTypeCard(number)) found += "V";
        if (cards.validateMasterTypeCard(number)) found += "M";
        if (cards.validateAmericanExpressTypeCard(number)) found += "A";
        if (cards.validatityOfDinersClubTypeCard(number)) found += "D";
        if (cards.validatityOfDiscoverTypeCard(number)) found += "S";
        if (cards.validatityOfJcbTypeCard(number)) found += "J";
        if (cards.validateRupayCard(number)) found += "R";
        EXPECT_EQ(found, scheme) << number;
    }
    EXPECT_TRUE(cards.validateCardName("José O’Neill"));
    EXPECT_FALSE(cards.validateCardName("R2 D2"));
}

class CardsInLocale : public Cards, public ::testing::WithParamInterface<const char*> {};

TEST_P(CardsInLocale, ExpireWithTheBeginningOfTheirMonth) {
    using namespace std::chrono;
    setenv("LC_ALL", GetParam(), 1);
    setenv("TZ", "UTC", 1);
    configure("torvel_cardExpiryDate_regex = \"[0-9]{2}/[0-9]{2}([0-9]{2})?\";");
    const year_month_day today(floor<days>(system_clock::now()));
    const year_month now = today.year() / today.month();
    const auto text = [](year_month month, const char* format) {
        char digits[32];
        std::snprintf(digits, sizeof digits, format, static_cast<unsigned>(month.month()),
                      static_cast<int>(month.year()) % 100);
        return std::string(digits);
    };
    const std::pair<std::string, std::optional<bool>> rows[] = {
        {text(now, "%02u/%02d"), false},
        {text(now + months(1), "%02u/%02d"), true},
        {text(now - months(1), "%02u/%02d"), false},
        {text(now + years(5), "%02u/%02d"), true},
        {text(now + years(5), "%02u/20%02d"), true},
        {"12/9999", true},
        {"08/99", false},  // 1999: beyond twenty years ahead
        {"8/40", false},   // a month, but not by the pattern
        {"13/40", std::nullopt},
        {"08/40x", std::nullopt},
        {"abc", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [expiry, valid] : rows) EXPECT_EQ(cards.validateExpiryDate(expiry), valid) << expiry;
}

INSTANTIATE_TEST_SUITE_P(Locales, CardsInLocale, ::testing::Values("en_US", "th_TH", "fa_IR", "ja_JP"));

}  // namespace
}  // namespace torvel
