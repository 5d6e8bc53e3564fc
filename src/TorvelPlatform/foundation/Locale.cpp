#include "TorvelPlatform/foundation/Locale.h"

#include <algorithm>
#include <cstdlib>
#include <initializer_list>
#include <string_view>

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

}  // namespace

const Locale& Locale::current() {
    static const Locale locale(localeIdentifier(firstSet({"LC_ALL", "LANG"})));
    return locale;
}

const std::vector<std::string>& Locale::preferredLanguages() {
    static const std::vector<std::string> languages = languagesOfTheEnvironment();
    return languages;
}

}  // namespace torvel
