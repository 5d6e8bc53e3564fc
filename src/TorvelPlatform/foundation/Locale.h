#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace torvel {

// A locale by its identifier ("en_US", "ar_EG"). A value; comparing is comparing identifiers. Any thread.
class Locale {
  public:
    // The locale of an identifier, whether or not there is data for it.
    explicit Locale(std::string identifier) : m_identifier(std::move(identifier)) {}

    // From the environment: LC_ALL, then LANG, without codeset and modifier. Unset, "C" and "POSIX" count as
    // en_US. Read once a process.
    static const Locale& current();
    // The languages the user prefers, best first, as BCP 47 tags ("fr-CA", "en"): LANGUAGE, then LC_ALL,
    // LC_MESSAGES or LANG. Never empty. Read once a process.
    static const std::vector<std::string>& preferredLanguages();

    // The identifiers that there is data for, in ICU's order.
    static const std::vector<std::string>& availableIdentifiers();
    // The first of the available locales with a currency symbol. They are walked once a process.
    static std::optional<Locale> withCurrencySymbol(std::string_view symbol);

    // Whether a language ("ar", "he-IL") is written from right to left.
    static bool isRightToLeft(std::string_view language);

    // The identifier as given.
    const std::string& identifier() const { return m_identifier; }
    // The symbol of the currency of the locale's region, as the locale writes it. Absent without a region or
    // when it is the generic sign U+00A4.
    std::optional<std::string> currencySymbol() const;
    auto operator<=>(const Locale&) const = default;

  private:
    std::string m_identifier;
};

}  // namespace torvel
