#include "TorvelLibrary/validation/CardUtils.h"

#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelPlatform/foundation/Characters.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/MonthStart.h"
#include "TorvelPlatform/foundation/Predicate.h"
#include "TorvelPlatform/foundation/WallClock.h"

#include <algorithm>
#include <initializer_list>
#include <ranges>
#include <string>

namespace torvel {
namespace {

using Configured = const std::string& (*)();
using Configuration = TorvelConfigurations;

bool matches(std::string_view text, Configured pattern) {
    return Predicate::matches(pattern()).evaluate(text);
}

// Each pattern is read just before its test.
bool matchesAny(std::string_view text, std::initializer_list<Configured> patterns) {
    return std::ranges::any_of(patterns, [&](Configured pattern) { return matches(text, pattern); });
}

int decimalValue(std::string_view character) {
    if (character.size() != 1 || character[0] < '0' || character[0] > '9')
        fatalError("CardUtils: a card number is made of digits only");
    return character[0] - '0';
}

}  // namespace

const CardUtils& CardUtils::sharedInstance() {
    static const CardUtils instance;
    return instance;
}

bool CardUtils::validateCardNumber(std::string_view ccNumber) const {
    if (ccNumber.empty()) return false;
    int oddSum = 0, evenSum = 0;
    bool odd = true;  // the last digit is the first one
    for (const std::string_view character : std::views::reverse(characters(ccNumber))) {
        const int digit = decimalValue(character), twice = digit * 2;
        if (odd)
            oddSum += digit;
        else
            evenSum += twice / 10 + twice % 10;
        odd = !odd;
    }
    return (oddSum + evenSum) % 10 == 0;
}

bool CardUtils::validateVisaTypeCard(std::string_view cardNumber) const {
    return matchesAny(cardNumber, {Configuration::visaValid, Configuration::visa});
}

bool CardUtils::validateMasterTypeCard(std::string_view cardNumber) const {
    return matchesAny(cardNumber, {Configuration::masterCardValid, Configuration::masterCardShorter,
                                   Configuration::masterCardShort, Configuration::masterCard});
}

bool CardUtils::validateAmericanExpressTypeCard(std::string_view cardNumber) const {
    return matchesAny(cardNumber, {Configuration::americanExpressValid, Configuration::americanExpress});
}

bool CardUtils::validatityOfDinersClubTypeCard(std::string_view cardNumber) const {
    return matchesAny(cardNumber, {Configuration::dinersClubValid, Configuration::dinersClubShort,
                                   Configuration::dinersClub});
}

bool CardUtils::validatityOfDiscoverTypeCard(std::string_view cardNumber) const {
    return matchesAny(cardNumber,
                      {Configuration::discoverValid, Configuration::discoverShort, Configuration::discover});
}

bool CardUtils::validatityOfJcbTypeCard(std::string_view cardNumber) const {
    return matchesAny(cardNumber, {Configuration::jcbValid, Configuration::jcbShort, Configuration::jcb});
}

bool CardUtils::validateRupayCard(std::string_view cardNumber) const {
    return matches(cardNumber, Configuration::rupayCard);
}

bool CardUtils::validateCardName(std::string_view cardName) const {
    return matches(cardName, Configuration::cardNameRegex);
}

std::optional<bool> CardUtils::validateExpiryDate(std::string_view expiryDate) const {
    using namespace std::chrono;
    const std::optional<MonthStart> month = parseMonthStart(expiryDate);
    if (!month) return std::nullopt;
    if (!matches(expiryDate, Configuration::cardExpiryDateRegex)) return false;
    return *month >= ceil<milliseconds>(WallClock::now());
}

}  // namespace torvel
