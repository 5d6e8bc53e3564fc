#include "Fuzz.h"
#include "TorvelLibrary/Utils/Amounts.h"
#include "TorvelLibrary/Utils/Strings.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelLibrary/validation/CardUtils.h"
#include "TorvelPlatform/foundation/Characters.h"
#include "TorvelPlatform/foundation/MonthStart.h"
#include "TorvelPlatform/foundation/Predicate.h"
#include "TorvelPlatform/foundation/Text.h"

#include <algorithm>

using namespace torvel;

// What a user types, and behind the first line feed a pattern for it.
void fuzz(std::string_view bytes) {
    const std::string_view typed = bytes.substr(0, bytes.find('\n'));
    std::string whole;
    for (const std::string_view character : characters(typed)) whole += character;
    mustHold(whole == typed);
    mustHold(characters(typed).size() == characterCount(typed));
    mustHold(typed.find(CharacterSet::whitespaces().trimming(typed)) != typed.npos);
    mustHold(onlyNumbers(typed, CharacterSet::decimalDigits()).size() <= typed.size());
    getFirstCharacters(typed);

    mustHold(getDisplayAmountWithoutCurrency(typed, "$", true).empty() == !decimalNumber(typed));
    const std::string english = Utils::getEnglishNumber(typed);
    mustHold(english.empty() || decimalNumber(english));
    if (parseMonthStart(typed)) mustHold(typed.find('/') != typed.npos);
    const std::string_view pattern = bytes.substr(std::min(typed.size() + 1, bytes.size()));
    Predicate::matches(pattern).evaluate(typed);
    CardUtils::sharedInstance().validateCardNumber(typed);
}
