#include "TorvelPlatform/foundation/Locale.h"

#include "TorvelPlatform/foundation/Text.h"
#include "TorvelPlatform/foundation/UnicodeText.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string_view>

#include <unicode/ucurr.h>
#include <unicode/uloc.h>

namespace torvel {
namespace {

// "fr_CA.UTF-8@euro" without codeset and modifier; the language of no user ("C", "POSIX") is en_US.
std::string localeIdentifier(std::string_view name) {
    name = name.substr(0, name.find_first_of(".@"));
    if (name.empty() || name == "C" || name == "POSIX") return "en_US";
    return std::string(name);
}

// The first of the variables that is set and not empty, as POSIX reads them.
std::string_view firstSet(std::initializer_list<const char*> variables) {
    for (const char* variable : variables) {
        const char* value = std::getenv(variable);
        if (value != nullptr && *value != '\0') return value;
    }
    return {};
}

void addLanguage(std::vector<std::string>& languages, std::string_view name) {
    std::string tag = localeIdentifier(name);
    std::replace(tag.begin(), tag.end(), '_', '-');
    if (std::find(languages.begin(), languages.end(), tag) == languages.end()) languages.push_back(tag);
}

std::vector<std::string> languagesOfTheEnvironment() {
    std::vector<std::string> languages;
    std::string_view list = firstSet({"LANGUAGE"});
    while (!list.empty()) {
        const std::string_view name = list.substr(0, list.find(':'));
        if (!name.empty()) addLanguage(languages, name);
        list.remove_prefix(std::min(name.size() + 1, list.size()));
    }
    addLanguage(languages, firstSet({"LC_ALL", "LC_MESSAGES", "LANG"}));
    return languages;
}

std::vector<std::string> identifiersOfICU() {
    std::vector<std::string> identifiers;
    for (std::int32_t i = 0; i < uloc_countAvailable(); ++i) identifiers.emplace_back(uloc_getAvailable(i));
    return identifiers;
}

ByText<std::string> firstIdentifierOfEachSymbol() {
    ByText<std::string> identifiers;
    for (const std::string& identifier : Locale::availableIdentifiers())
        if (auto symbol = Locale(identifier).currencySymbol())
            identifiers.emplace(*std::move(symbol), identifier);
    return identifiers;
}

}  // namespace

const Locale& Locale::current() {
    static const Locale locale(localeIdentifier(firstSet({"LC_ALL", "LANG"})));
    return locale;
}

const std::vector<std::string>& Locale::preferredLanguages() {
    static const std::vector<std::string> languages = languagesOfTheEnvironment();
    return languages;
}

const std::vector<std::string>& Locale::availableIdentifiers() {
    static const std::vector<std::string> identifiers = identifiersOfICU();
    return identifiers;
}

std::optional<Locale> Locale::withCurrencySymbol(std::string_view symbol) {
    static const ByText<std::string> identifiers = firstIdentifierOfEachSymbol();
    const auto found = identifiers.find(symbol);
    if (found == identifiers.end()) return std::nullopt;
    return Locale(found->second);
}

bool Locale::isRightToLeft(std::string_view language) {
    return uloc_isRightToLeft(std::string(language).c_str()) != 0;
}

std::optional<std::string> Locale::currencySymbol() const {
    UErrorCode error = U_ZERO_ERROR;
    char16_t currency[4] = {};
    ucurr_forLocale(m_identifier.c_str(), currency, 4, &error);
    std::int32_t length = 0;
    const char16_t* const symbol =
        ucurr_getName(currency, m_identifier.c_str(), UCURR_SYMBOL_NAME, nullptr, &length, &error);
    if (U_FAILURE(error)) return std::nullopt;
    std::string text = utf8Text(icu::UnicodeString(symbol, length));
    if (text == "\u00A4") return std::nullopt;
    return text;
}

}  // namespace torvel
