#pragma once

#include <cstdint>
#include <string>

namespace torvel {

// Every configuration value: its name, its key in the strings table "Configurations" and, for a number, what
// it is when the key is missing or is no number. A missing text is the key itself, a missing flag false.
// Adding a value is adding a line. The keys are spelt as hosts' tables have them.
// clang-format off
#define TORVEL_CONFIGURATIONS(TEXT, INTEGER, FLAG)                                              \
    TEXT(mobileoUnRegRegEx, "torvel_mobileno_unreg_regex")                                      \
    TEXT(mobileNoRegex, "torvel_mobileno_regex")                                                \
    TEXT(paymentIdGenericRegEx, "torvel_payment_id_generic_regex")                              \
    TEXT(amountRegex, "torvel_amount_regex")                                                    \
    TEXT(emailIDRegex, "torvel_emailid_regex")                                                  \
    TEXT(userNameRegex, "torvel_username_regex")                                                \
    TEXT(accountNoRegex, "torvel_accountno_regex")                                              \
    TEXT(firstNameRegex, "torvel_firstname_regex")                                              \
    TEXT(lastNameRegex, "torvel_lastname_regex")                                                \
    TEXT(userCodeRegEx, "torvel_usercode_regex")                                                \
    TEXT(loginIdRegex, "torvel_loginid_regex")                                                  \
    TEXT(pinRegEx, "torvel_pin_regex")                                                          \
    TEXT(currencyCode, "torvel_currency_symbol")                                                \
    TEXT(currencyLabel, "torvel_currency_name")                                                 \
    FLAG(isCurrencyCodePrefix, "torvel_currency_prefix")                                        \
    TEXT(amountSeparator, "torvel_amount_separator")                                            \
    INTEGER(amountLength, "torvel_amount_length", 10)                                           \
    INTEGER(pinLength, "torvel_pin_length", 4)                                                  \
    INTEGER(otpLength, "torvel_otp_length", 6)                                                  \
    INTEGER(passcodeLength, "torvel_unreg_passcode_length", 10)                                 \
    INTEGER(mobileNoLength, "torvel_mobileno_length", 10)                                       \
    INTEGER(emailIdLength, "torvel_emailid_length", 200)                                        \
    INTEGER(userNameLength, "torvel_username_length", 10)                                       \
    INTEGER(firstNameLength, "torvel_firstname_length", 10)                                     \
    INTEGER(lastNameLength, "torvel_lastname_length", 10)                                       \
    INTEGER(userCodeLength, "torvel_usercode_length", 10)                                       \
    INTEGER(loginIdLength, "torvel_loginid_length", 10)                                         \
    INTEGER(otherIdLenght, "torvel_otherpaymentid_lenght", 10)                                  \
    TEXT(cardNameRegex, "torvel_cardName_regex")                                                \
    TEXT(cardExpiryDateRegex, "torvel_cardExpiryDate_regex")                                    \
    TEXT(visa, "torvel_visa_regex")                                                             \
    TEXT(visaValid, "torvel_visaValid_regex")                                                   \
    TEXT(masterCard, "torvel_masterCard_regex")                                                 \
    TEXT(masterCardShort, "torvel_masterCardShort_regex")                                       \
    TEXT(masterCardShorter, "torvel_masterCardShorter_regex")                                   \
    TEXT(masterCardValid, "torvel_masterCardValid_regex")                                       \
    TEXT(americanExpress, "torvel_americanExpress_regex")                                       \
    TEXT(americanExpressValid, "torvel_americanExpressValid_regex")                             \
    TEXT(americanExpress34, "torvel_americanExpress34_regex")                                   \
    TEXT(americanExpress37, "torvel_americanExpress37_regex")                                   \
    TEXT(discover, "torvel_discover_regex")                                                     \
    TEXT(discoverShort, "torvel_discoverShort_regex")                                           \
    TEXT(discoverValid, "torvel_discoverValid_regex")                                           \
    TEXT(jcb, "torvel_jcb_regex")                                                               \
    TEXT(jcbShort, "torvel_jcbShort_regex")                                                     \
    TEXT(jcbValid, "torvel_jcbValid_regex")                                                     \
    TEXT(dinersClub, "torvel_dinersClub_regex")                                                 \
    TEXT(dinersClubShort, "torvel_dinersClubShort_regex")                                       \
    TEXT(dinersClubValid, "torvel_dinersClubValid_regex")                                       \
    TEXT(rupayCard, "torvel_rupay_regex")                                                       \
    TEXT(mobileNumberPaymentIdRegEx, "torvel_mobileNumberPaymentId_regex")                      \
    TEXT(otherPaymentIdRegex, "torvel_otherPaymentId_regex")                                    \
    TEXT(debitCardLength, "torvel_cardLength_regex")                                            \
    TEXT(cardNumberRegex, "torvel_cardNumber_regex")                                            \
    TEXT(documentIdRegex, "torvel_documentid_regex")                                            \
    TEXT(documentIdLength, "torvel_document_length")                                            \
    TEXT(passportRegex, "torvel_passport_number_regex")                                         \
    TEXT(passportLength, "torvel_passport_number_length")                                       \
    TEXT(aliasHandle, "torvel_aliashandle_label")                                               \
    TEXT(dunmereVirtualKeyboard, "dunmere_virtualKeyBoardRequired_flag")
// clang-format on

// The validation patterns, lengths and currency presentation of the host's flavour. Each value is read from
// the table on its first use and kept for the life of the process. Any thread.
class TorvelConfigurations {
  public:
#define TORVEL_TEXT(NAME, KEY) static const std::string& NAME();
#define TORVEL_INTEGER(NAME, KEY, FALLBACK) static std::int64_t NAME();
#define TORVEL_FLAG(NAME, KEY) static bool NAME();
    // The value of that name in TORVEL_CONFIGURATIONS.
    TORVEL_CONFIGURATIONS(TORVEL_TEXT, TORVEL_INTEGER, TORVEL_FLAG)
#undef TORVEL_TEXT
#undef TORVEL_INTEGER
#undef TORVEL_FLAG
};

}  // namespace torvel
