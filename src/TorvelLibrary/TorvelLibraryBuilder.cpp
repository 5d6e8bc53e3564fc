#include "TorvelLibrary/TorvelLibraryBuilder.h"

#include "TorvelLibrary/TorvelLibrary.h"

namespace torvel {

using CurrencyMap = std::map<std::string, std::string>;

// Every setter is the same three words over another field.
#define TORVEL_SETTER(NAME, TYPE, FIELD)                           \
    TorvelLibraryBuilder& TorvelLibraryBuilder::NAME(TYPE value) { \
        FIELD = std::move(value);                                  \
        return *this;                                              \
    }

TORVEL_SETTER(setServerURL, std::string, serverURL)
TORVEL_SETTER(setCurrencyCode, std::string, currencyCode)
TORVEL_SETTER(setamountSeperator, std::string, amountSeperator)
TORVEL_SETTER(setisCurrencyCodePrefix, bool, isCurrencyCodePrefix)
TORVEL_SETTER(setEncryptionCertName, std::string, encryptionCertName)
TORVEL_SETTER(setBase64, std::string, base64String)
TORVEL_SETTER(setIsHttpsByPassRequired, bool, isHttpsByPassRequired)
TORVEL_SETTER(setMobileNumberRegEx, std::string, mobileNumberRegEx)
TORVEL_SETTER(setAccountNumberRegEx, std::string, accountNumberRegEx)
TORVEL_SETTER(setAmountRegEx, std::string, amountRegEx)
TORVEL_SETTER(setMobileNumberPaymentIdRegEx, std::string, mobileNumberPaymentIdRegEx)
TORVEL_SETTER(setOtherPaymentIdRegEx, std::string, otherPaymentIdRegex)
TORVEL_SETTER(setWrapperConfig, WrapperConfig, wrapperConfig)
TORVEL_SETTER(setUserNameRegEx, std::string, userNameRegEx)
TORVEL_SETTER(setRequestTimeoutInterval, double, requestTimeoutInterval)
TORVEL_SETTER(setFontSizesDependency, std::shared_ptr<const FontSizesDependency>, fontSizesDependency)
TORVEL_SETTER(setCurrencyMap, CurrencyMap, currencyMap)
TORVEL_SETTER(setSSlType, SSlPinningType, sslType)

#undef TORVEL_SETTER

void TorvelLibraryBuilder::build() const {
    auto library = std::make_shared<TorvelLibrary>(serverURL.value_or(""));
    library->encryptionCertName = encryptionCertName;
    library->base64String = base64String;
    library->isHttpsByPassRequired = isHttpsByPassRequired;
    library->wrapperConfig = wrapperConfig;
    library->requestTimeoutInterval = requestTimeoutInterval;
    if (fontSizesDependency) library->fontSizesDependency = fontSizesDependency;
    if (sslType) library->sslType = *sslType;
    library->currencyMap = currencyMap;
    TorvelLibrary::instance().store(std::move(library));
}

WrapperConfig TorvelLibraryBuilder::getWrapperConfig() const {
    const auto library = TorvelLibrary::instance().load();
    return library ? library->wrapperConfig : WrapperConfig::VelmMoney;
}

}  // namespace torvel
