#include "TorvelLibrary/Utils/LocaleHelper.h"

#include "TorvelLibrary/Utils/SharedStore.h"
#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/foundation/Locale.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"

#include <atomic>
#include <vector>

namespace torvel {
namespace {

Guarded<std::string>& defaultAppLanguage() {
    static auto& language = *new Guarded<std::string>("en");
    return language;
}

std::atomic<std::uint64_t> defaultLanguageChanges{0};

constexpr std::string_view languagesKey = "AppleLanguages";

// The stored languages, the one in force first. Always in the shared store: a host that sets a default suite
// later would otherwise lose its users' language.
std::vector<std::string> appleLanguages() {
    const auto store = sharedStore();
    const auto value = store ? store->object(languagesKey) : std::nullopt;
    auto languages = value ? value->stringArrayValue() : std::nullopt;
    return std::move(languages).value_or(std::vector<std::string>());
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
    const std::vector<std::string> languages = appleLanguages();
    if (languages.empty()) return getDefaultAppLanguage();
    return languages.front().substr(0, languages.front().find('-'));
}

void LocaleHelper::setAppleLanguageTo(std::string_view lang) {
    const PropertyValue::Array languages{lang, currentAppleLanguage()};
    if (const auto store = sharedStore()) store->set(languagesKey, languages);
    ScreenEnvironment::direction = Locale::isRightToLeft(lang) ? ScreenEnvironment::Direction::rightToLeft
                                                               : ScreenEnvironment::Direction::leftToRight;
}

void LocaleHelper::setDefaultAppLanguageTo(std::string_view lang) {
    defaultAppLanguage().store(std::string(lang));
    ++defaultLanguageChanges;
}

std::uint64_t LocaleHelper::changeCount() { return SecureDefaults::changeCount() + defaultLanguageChanges; }

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
