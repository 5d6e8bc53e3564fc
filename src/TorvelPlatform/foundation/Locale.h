#pragma once

#include <string>
#include <utility>
#include <vector>

namespace torvel {

// A locale by its identifier ("en_US", "ar_EG"). A value; comparing is comparing identifiers.
class Locale {
  public:
    explicit Locale(std::string identifier) : m_identifier(std::move(identifier)) {}

    // From the environment: LC_ALL, then LANG, without codeset and modifier. Unset, "C" and "POSIX" count as
    // en_US. Read once a process.
    static const Locale& current();
    // The languages the user prefers, best first, as BCP 47 tags ("fr-CA", "en"): LANGUAGE, then LC_ALL,
    // LC_MESSAGES or LANG. Never empty. Read once a process.
    static const std::vector<std::string>& preferredLanguages();

    const std::string& identifier() const { return m_identifier; }
    bool operator==(const Locale&) const = default;

  private:
    std::string m_identifier;
};

}  // namespace torvel
