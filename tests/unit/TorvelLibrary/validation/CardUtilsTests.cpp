#include "TorvelLibrary/validation/CardUtils.h"
#include "TorvelTesting/FixedClock.h"
#include "TorvelTesting/HostFixture.h"

#include <chrono>
#include <functional>
#include <random>

namespace torvel {
namespace {

struct Scheme {
    bool (CardUtils::*check)(std::string_view) const;
    char letter, patterns;
};
const Scheme schemes[] = {
    {&CardUtils::validateVisaTypeCard, 'V', '2'},
    {&CardUtils::validateMasterTypeCard, 'M', '4'},
    {&CardUtils::validateAmericanExpressTypeCard, 'A', '2'},  // without its 34 and 37
    {&CardUtils::validatityOfDinersClubTypeCard, 'D', '3'},
    {&CardUtils::validatityOfDiscoverTypeCard, 'S', '3'},
    {&CardUtils::validatityOfJcbTypeCard, 'J', '3'},
    {&CardUtils::validateRupayCard, 'R', '1'},
    {&CardUtils::validateCardName, 'N', '1'},
};

struct Cards : testing::HostFixture {
    Cards() { Bundle::setLibrary(directory()); }

    const CardUtils& cards = CardUtils::sharedInstance();
};

// The schemes' public test numbers.
TEST_F(Cards, KnowTheCheckDigit) {
    for (const char* number : {"4111111111111111", "378282246310005", "30569309025904", "4222222222222", "0"})
        EXPECT_TRUE(cards.validateCardNumber(number)) << number;
    EXPECT_FALSE(cards.validateCardNumber("5") || cards.validateCardNumber(""));
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
    addResource("Configurations.strings",
                "torvel_visa_regex = V1; torvel_visaValid_regex = V2;"
                "torvel_masterCard_regex = M1; torvel_masterCardShort_regex = M2;"
                "torvel_masterCardShorter_regex = M3; torvel_masterCardValid_regex = M4;"
                "torvel_americanExpress_regex = A1; torvel_americanExpressValid_regex = A2;"
                "torvel_americanExpress34_regex = A3; torvel_americanExpress37_regex = A4;"
                "torvel_dinersClub_regex = D1; torvel_dinersClubShort_regex = D2;"
                "torvel_dinersClubValid_regex = D3; torvel_discover_regex = S1;"
                "torvel_discoverShort_regex = S2; torvel_discoverValid_regex = S3;"
                "torvel_jcb_regex = J1; torvel_jcbShort_regex = J2; torvel_jcbValid_regex = J3;"
                "torvel_rupay_regex = R1; torvel_cardName_regex = N1;");
    for (const auto& [check, scheme, patterns] : schemes)
        for (const char other : std::string("VMADSJRN"))
            for (char pattern = '1'; pattern <= '4'; ++pattern)
                EXPECT_EQ(std::invoke(check, cards, std::string{other, pattern}),
                          other == scheme && pattern <= patterns)
                    << scheme << " " << other << pattern;
}

// The sample host's table, on the schemes' public test numbers.
TEST_F(Cards, TheSampleHostKnowsRealCards) {
    Bundle::setLibrary(TORVEL_SAMPLE_RESOURCES);
    const std::pair<const char*, const char*> numbers[] = {
        {"4012888888881881", "V"}, {"5105105105105100", "M"}, {"2223003122003222", "M"},
        {"371449635398431", "A"},  {"38520000023237", "D"},   {"6011000990139424", "SR"},
        {"3566002020360505", "J"}, {"5085000000000000", "R"}, {"1234567890123456", ""},
    };
    for (const auto& [number, scheme] : numbers) {
        std::string found;
        for (const auto& [check, letter, patterns] : schemes)
            if (letter != 'N' && std::invoke(check, cards, number)) found += letter;
        EXPECT_EQ(found, scheme) << number;
    }
    EXPECT_TRUE(cards.validateCardName("José O’Neill"));
    EXPECT_FALSE(cards.validateCardName("R2 D2"));
}

TEST_F(Cards, ExpireWithTheBeginningOfTheirMonth) {
    using namespace std::chrono;
    using namespace std::chrono_literals;
    setenv("LC_ALL", "th_TH", 1);
    setenv("TZ", "UTC", 1);
    addResource("Configurations.strings", "torvel_cardExpiryDate_regex = \"[0-9]{2}/[0-9]{2}([0-9]{2})?\";");
    const testing::FixedClock clock(sys_days(2027y / 5 / 15));
    const std::pair<const char*, std::optional<bool>> rows[] = {
        {"05/27", false},         {"06/27", true},   {"04/27", false}, {"05/32", true},
        {"05/2032", true},        {"12/9999", true}, {"08/99", false},  // 1999: beyond twenty years ahead
        {"8/40", false},                                                // a month, but not by the pattern
        {"08/40x", std::nullopt},
    };
    for (const auto& [expiry, valid] : rows) EXPECT_EQ(cards.validateExpiryDate(expiry), valid) << expiry;
    testing::FixedClock::set(sys_days(2027y / 6 / 1));  // the last instant
    EXPECT_EQ(cards.validateExpiryDate("06/27"), true);
    testing::FixedClock::set(sys_days(2027y / 6 / 1) + 1s);
    EXPECT_EQ(cards.validateExpiryDate("06/27"), false);
}

}  // namespace
}  // namespace torvel
