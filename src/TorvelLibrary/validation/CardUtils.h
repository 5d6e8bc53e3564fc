#pragma once

#include <optional>
#include <string_view>

namespace torvel {

// Checks of what the user types into a payment-card form. The rules of the card schemes are patterns of the
// configuration, read at each check and matched as ValidationHelper does. Stateless; any thread.
class CardUtils {
  public:
    // The one instance.
    static const CardUtils& sharedInstance();

    // Whether the last digit is the check digit of the others (Luhn, ISO/IEC 7812-1). Length and scheme do
    // not count; the empty text is not valid. Deliberately strict: any character but the digits 0 to 9, a
    // space or hyphen included, stops the process. Callers pass what they have filtered.
    bool validateCardNumber(std::string_view ccNumber) const;

    // Whether a number belongs to a scheme: its patterns, narrow to broad, and any of them will do.
    bool validateVisaTypeCard(std::string_view cardNumber) const;
    bool validateMasterTypeCard(std::string_view cardNumber) const;
    bool validateAmericanExpressTypeCard(std::string_view cardNumber) const;
    // Deliberate spelling: hosts call these three by it.
    bool validatityOfDinersClubTypeCard(std::string_view cardNumber) const;
    bool validatityOfDiscoverTypeCard(std::string_view cardNumber) const;
    bool validatityOfJcbTypeCard(std::string_view cardNumber) const;
    bool validateRupayCard(std::string_view cardNumber) const;

    // By the configured pattern for names on cards.
    bool validateCardName(std::string_view cardName) const;

    // No value for a text that is no month and year ("08/27", see parseMonthStart); otherwise whether it
    // matches the configured pattern and the month has not begun. Deliberate: a card counts as expired from
    // the first instant of its expiry month.
    std::optional<bool> validateExpiryDate(std::string_view expiryDate) const;

  private:
    CardUtils() = default;
};

}  // namespace torvel
