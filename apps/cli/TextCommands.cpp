#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/Utils/Amounts.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/Utils/Strings.h"
#include "TorvelLibrary/validation/CardUtils.h"
#include "TorvelLibrary/validation/ValidationHelper.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "cli/Command.h"
#include "cli/Output.h"
#include "sample/SampleResources.h"

#include <algorithm>

// What a host tells its user about a typed text, by the configuration of a bundle.
namespace torvel::cli {
namespace {

std::optional<std::string> checkDigits(std::string_view value) {
    if (!value.empty() && value.find_first_not_of("0123456789") == value.npos) return std::nullopt;
    return "is not made of the digits 0 to 9 only";
}

std::optional<std::string> checkDirection(std::string_view value) {
    if (value == "ltr" || value == "rtl") return std::nullopt;
    return "is neither ltr nor rtl";
}

struct Kind {
    std::string_view name;
    bool (*validate)(std::string_view text);
};
constexpr Kind kinds[] = {
    {"amount", ValidationHelper::validateAmount},
    {"account", ValidationHelper::validateAccountNo},
    {"mobile", ValidationHelper::validateMobileNo},
    {"user", ValidationHelper::validateUserName},
};

std::optional<std::string> checkKind(std::string_view value) {
    if (std::ranges::find(kinds, value, &Kind::name) != std::end(kinds)) return std::nullopt;
    return "is no kind: amount, account, mobile or user";
}

constexpr Option bundleOption{"--bundle", "DIR", "the host's resources; the sample host's by default"};
constexpr Option cardOptions[] = {
    {"NUMBER", "", "the card number, digits only", Occurs::once, checkDigits},
    {"--expiry", "MM/YY", "the expiry date too"},
    {"--name", "TEXT", "the name on the card too"},
    bundleOption,
};
constexpr Option amountOptions[] = {
    {"TEXT", "", "the amount in plain decimal notation", Occurs::once},
    {"--currency", "SYMBOL", "the currency; the configuration's by default"},
    {"--decimals", "", "always two decimals"},
    {"--direction", "DIR", "the screen's writing direction, ltr or rtl (ltr)", Occurs::atMostOnce,
     checkDirection},
    bundleOption,
};
constexpr Option validateOptions[] = {
    {"KIND", "", "amount, account, mobile or user", Occurs::once, checkKind},
    {"TEXT", "", "what the user typed", Occurs::once},
    bundleOption,
};

// Makes the bundle's the configuration in force, as a host does at its start. Why that cannot be; absent when
// it is done.
std::optional<std::string> useBundle(const Arguments& arguments) {
    const std::string directory = arguments.text("--bundle", sampleResources().string());
    const auto bundle = Bundle::at(directory);
    if (!bundle) return "--bundle: there is no folder " + directory;
    if (!bundle->languageBundle("en") || !bundle->languageBundle("en")->path("Configurations", "strings"))
        return "--bundle: there is no en.lproj/Configurations.strings in " + directory;
    LogUtils::setLoggingEnabled(true);  // faults in the table and its patterns
    Bundle::setMain(directory);
    LocaleHelper::doTheSwizzling();
    return std::nullopt;
}

std::string schemesOf(const std::string& number) {
    using Check = bool (CardUtils::*)(std::string_view) const;
    constexpr std::pair<std::string_view, Check> schemes[] = {
        {"Visa", &CardUtils::validateVisaTypeCard},
        {"Mastercard", &CardUtils::validateMasterTypeCard},
        {"American Express", &CardUtils::validateAmericanExpressTypeCard},
        {"Diners Club", &CardUtils::validatityOfDinersClubTypeCard},
        {"Discover", &CardUtils::validatityOfDiscoverTypeCard},
        {"JCB", &CardUtils::validatityOfJcbTypeCard},
        {"RuPay", &CardUtils::validateRupayCard},
    };
    std::string names;
    for (const auto& [name, check] : schemes)
        if ((CardUtils::sharedInstance().*check)(number))
            names.append(names.empty() ? "" : ", ").append(name);
    return names;
}

// What is wrong with the parts of a card, one after the other; empty when nothing is.
std::string cardFaults(const Arguments& arguments, const std::string& schemes) {
    const CardUtils& cards = CardUtils::sharedInstance();
    std::string faults;
    const auto require = [&faults](bool good, std::string_view fault) {
        if (!good) faults.append(faults.empty() ? "" : "; ").append(fault);
    };
    require(cards.validateCardNumber(arguments.text("NUMBER", "")), "the check digit is wrong");
    require(!schemes.empty(), "no scheme has such a number");
    if (const auto expiry = arguments.text("--expiry")) {
        const std::optional<bool> valid = cards.validateExpiryDate(*expiry);
        require(valid.has_value(), "the expiry date is no month and year");
        require(valid.value_or(true), "the card has expired, or its date is not in the configured form");
    }
    if (const auto name = arguments.text("--name"))
        require(cards.validateCardName(*name), "the name is not in the configured form");
    return faults;
}

int card(const Arguments& arguments) {
    if (const auto fault = useBundle(arguments)) return arguments.failed(*fault);
    const std::string schemes = schemesOf(arguments.text("NUMBER", ""));
    const std::string faults = cardFaults(arguments, schemes);
    return faults.empty() ? deliver(schemes + "\n") : arguments.failed(faults);
}

int amount(const Arguments& arguments) {
    if (const auto fault = useBundle(arguments)) return arguments.failed(*fault);
    using enum ScreenEnvironment::Direction;
    ScreenEnvironment::direction = arguments.text("--direction", "ltr") == "rtl" ? rightToLeft : leftToRight;
    const std::string text = arguments.text("TEXT", "");
    const std::string currency = arguments.text("--currency", TorvelConfigurations::currencyCode());
    const bool decimals = arguments.has("--decimals");
    if (getDisplayAmountWithoutCurrency(text, currency, decimals).empty())
        return arguments.failed("'" + text + "' is no amount in plain decimal notation");
    return deliver(getDisplayAmount(text, false, String::space, currency, decimals) + "\n");
}

int validate(const Arguments& arguments) {
    if (const auto fault = useBundle(arguments)) return arguments.failed(*fault);
    const std::string name = arguments.text("KIND", "");
    const auto kind = std::ranges::find(kinds, std::string_view(name), &Kind::name);
    if (kind->validate(arguments.text("TEXT", ""))) return deliver("valid\n");
    return arguments.failed("not valid as " + name);
}

}  // namespace

const Command cardCommand = {
    "card",
    "check a payment card and name its scheme",
    "Exits with 1 and what is wrong when the check digit, the scheme, the date or the name is not\n"
    "accepted. For instance:\n\n"
    "  torvel card 4111111111111111 --expiry 08/29 --name 'Ada Lovelace'",
    cardOptions,
    card,
};

const Command amountCommand = {
    "amount",
    "write an amount as a screen shows it",
    "For instance:\n\n"
    "  torvel amount 1234.567 --currency € --decimals\n"
    "  torvel amount -- -5",
    amountOptions,
    amount,
};

const Command validateCommand = {
    "validate",
    "check a typed text against the configured pattern",
    "Prints \"valid\", or exits with 1. For instance:\n\n"
    "  torvel validate mobile 0700000001",
    validateOptions,
    validate,
};

}  // namespace torvel::cli
