#include "TorvelLibrary/validation/ValidationHelper.h"

#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelPlatform/foundation/Predicate.h"

namespace torvel {

bool ValidationHelper::validateAmount(std::string_view amount) {
    return validateData(amount, TorvelConfigurations::amountRegex());
}

bool ValidationHelper::validateAccountNo(std::string_view accountNo) {
    return validateData(accountNo, TorvelConfigurations::accountNoRegex());
}

bool ValidationHelper::validateMobileNo(std::string_view mobileNo) {
    return validateData(mobileNo, TorvelConfigurations::mobileNoRegex());
}

bool ValidationHelper::validateUserName(std::string_view userName) {
    return validateData(userName, TorvelConfigurations::userNameRegex());
}

bool ValidationHelper::validateData(std::string_view targetString, std::string_view regex) {
    return Predicate::matches(regex).evaluate(targetString);
}

}  // namespace torvel
