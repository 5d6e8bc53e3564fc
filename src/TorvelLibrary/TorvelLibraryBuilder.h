#pragma once

#include "TorvelLibrary/SSlPinningType.h"
#include "TorvelLibrary/Utils/FontSizesDependency.h"
#include "TorvelLibrary/WrapperConfig.h"

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace torvel {

// Configures the library, once, at start-up:
//
//   TorvelLibraryBuilder().setServerURL("https://api.example/v1/").setSSlType(...).build();
//
// Every setter stores its argument in the field of the same name and returns the builder.
class TorvelLibraryBuilder {
  public:
    // What TorvelLibrary's fields of the same names become.
    std::optional<std::string> serverURL;
    std::optional<std::string> encryptionCertName;
    std::optional<std::string> base64String;
    bool isHttpsByPassRequired = false;

    // Deliberate: the nine fields from here to isCurrencyCodePrefix are kept but go nowhere. Validation and
    // formatting take these settings from TorvelConfigurations; hosts still call the setters.
    std::optional<std::string> mobileNumberRegEx;
    std::optional<std::string> accountNumberRegEx;
    std::optional<std::string> amountRegEx;
    std::optional<std::string> userNameRegEx;
    std::optional<std::string> mobileNumberPaymentIdRegEx;
    std::optional<std::string> otherPaymentIdRegex;
    std::optional<std::string> currencyCode;
    std::optional<std::string> amountSeperator;
    std::optional<bool> isCurrencyCodePrefix;

    double requestTimeoutInterval = 30.0;  // seconds
    // What TorvelLibrary's fields of the same names become.
    WrapperConfig wrapperConfig = WrapperConfig::VelmMoney;
    std::shared_ptr<const FontSizesDependency> fontSizesDependency;  // nullptr: the default provider
    std::optional<SSlPinningType> sslType;                           // absent: none
    std::optional<std::map<std::string, std::string>> currencyMap;

    // Sets the field of that name and returns this builder.
    TorvelLibraryBuilder& setServerURL(std::string value);
    TorvelLibraryBuilder& setCurrencyCode(std::string value);
    TorvelLibraryBuilder& setamountSeperator(std::string value);
    TorvelLibraryBuilder& setisCurrencyCodePrefix(bool value);
    TorvelLibraryBuilder& setEncryptionCertName(std::string value);
    TorvelLibraryBuilder& setBase64(std::string value);
    TorvelLibraryBuilder& setIsHttpsByPassRequired(bool value);
    TorvelLibraryBuilder& setMobileNumberRegEx(std::string value);
    TorvelLibraryBuilder& setAccountNumberRegEx(std::string value);
    TorvelLibraryBuilder& setAmountRegEx(std::string value);
    TorvelLibraryBuilder& setMobileNumberPaymentIdRegEx(std::string value);
    TorvelLibraryBuilder& setOtherPaymentIdRegEx(std::string value);
    TorvelLibraryBuilder& setWrapperConfig(WrapperConfig value);
    TorvelLibraryBuilder& setUserNameRegEx(std::string value);
    TorvelLibraryBuilder& setRequestTimeoutInterval(double seconds);
    TorvelLibraryBuilder& setFontSizesDependency(std::shared_ptr<const FontSizesDependency> value);
    TorvelLibraryBuilder& setCurrencyMap(std::map<std::string, std::string> map);
    TorvelLibraryBuilder& setSSlType(SSlPinningType type);

    // Installs a new shared TorvelLibrary made from this builder, in place of any earlier one. The earlier
    // one's session ends with its last request. Any thread.
    void build() const;

    // The flavour of the installed library (not of this builder), VelmMoney when none is installed.
    WrapperConfig getWrapperConfig() const;
};

}  // namespace torvel
