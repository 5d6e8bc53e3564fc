#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelLibrary/Utils/WholeNumber.h"

namespace torvel {

WrapperConfig Utils::getWrapperConfig() { return TorvelLibrary::sharedInstance()->wrapperConfig; }

std::optional<std::string> Utils::getBase64Token() { return TorvelLibrary::sharedInstance()->base64String; }

const std::string& Utils::getMobileNoRegex() { return TorvelConfigurations::mobileNoRegex(); }
const std::string& Utils::getAccountNoRegex() { return TorvelConfigurations::accountNoRegex(); }
const std::string& Utils::getAmountRegex() { return TorvelConfigurations::amountRegex(); }
const std::string& Utils::getUsernameRegex() { return TorvelConfigurations::userNameRegex(); }
const std::string& Utils::getDocumentIdRegex() { return TorvelConfigurations::documentIdRegex(); }
const std::string& Utils::getPassportRegex() { return TorvelConfigurations::passportRegex(); }
const std::string& Utils::getDebitPINRegex() { return TorvelConfigurations::pinRegEx(); }
const std::string& Utils::getCardNumberRegex() { return TorvelConfigurations::cardNumberRegex(); }

std::int64_t Utils::getDocumentIdLength() {
    return wholeNumber(TorvelConfigurations::documentIdLength()).value_or(0);
}
std::int64_t Utils::getPassportLength() {
    return wholeNumber(TorvelConfigurations::passportLength()).value_or(0);
}
std::int64_t Utils::getDebitCardLength() {
    return wholeNumber(TorvelConfigurations::debitCardLength()).value_or(0);
}
std::int64_t Utils::getDebitPINLength() { return TorvelConfigurations::pinLength(); }

}  // namespace torvel
