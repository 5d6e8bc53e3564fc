#include "TorvelLibrary/Utils/LocaleHelper.h"

#include "TorvelPlatform/foundation/Guarded.h"

#include <vector>

namespace torvel {
namespace {

Guarded<std::string>& defaultAppLanguage() {
    static auto& language = *new Guarded<std::string>("en");
    return language;
}

// The stored languages, the one in force first.
Guarded<std::vector<std::string>>& appleLanguages() {
    static auto& languages = *new Guarded<std::vector<std::string>>;
    return languages;
}

std::optional<Bundle> languageFolder(const Bundle& bundle, std::string_view current,
                                     std::string_view fallback) {
    std::optional<Bundle> folder = bundle.languageBundle(current);
    return folder ? folder : bundle.languageBundle(fallback);
}

}  // namespace

void LocaleHelper::doTheSwizzling() {
    if (Bundle::replaceLookUp(specialLocalizedString) != nullptr) Bundle::replaceLookUp(nullptr);
}

std::string LocaleHelper::currentAppleLanguage() {
    const std::vector<std::string> languages = appleLanguages().load();
    if (languages.empty()) return getDefaultAppLanguage();
    return languages.front().substr(0, languages.front().find('-'));
}

void LocaleHelper::setAppleLanguageTo(std::string_view lang) {
    appleLanguages().store({std::string(lang), currentAppleLanguage()});
}

void LocaleHelper::setDefaultAppLanguageTo(std::string_view lang) {
    defaultAppLanguage().store(std::string(lang));
}

std::string LocaleHelper::getDefaultAppLanguage() { return defaultAppLanguage().load(); }

std::string specialLocalizedString(const Bundle& bundle, std::string_view forKey,
                                   std::optional<std::string_view> value, std::string_view table) {
    const bool isConfiguration = table == "Configurations";
    const std::string current = isConfiguration ? "en" : LocaleHelper::currentAppleLanguage();
    const std::string fallback = isConfiguration ? "en" : LocaleHelper::getDefaultAppLanguage();
    if (const auto folder = getMainBundlePath(current, fallback))
        if (std::string answer = folder->platformLocalizedString(forKey, value, table); answer != forKey)
            return answer;
    return getCallerBundlePath(bundle, current, fallback).platformLocalizedString(forKey, value, table);
}

std::optional<Bundle> getMainBundlePath(std::string_view currentLanguage, std::string_view defaultLanguage) {
    return languageFolder(Bundle::main(), currentLanguage, defaultLanguage);
}

Bundle getCallerBundlePath(const Bundle& bundle, std::string_view currentLanguage,
                           std::string_view defaultLanguage) {
    return languageFolder(bundle, currentLanguage, defaultLanguage).value_or(bundle);
}

std::string getLocalisedValue(std::string_view text, const Bundle& targetBundle, std::string_view table) {
    return targetBundle.localizedString(text, text, table);
}

}  // namespace torvel
