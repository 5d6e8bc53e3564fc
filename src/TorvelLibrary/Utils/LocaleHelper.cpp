#include "TorvelLibrary/Utils/LocaleHelper.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/SharedStore.h"
#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/foundation/Locale.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"

#include <vector>

namespace torvel {
namespace {

Guarded<std::string>& defaultAppLanguage() {
    static auto& language = *new Guarded<std::string>("en");
    return language;
}

constexpr std::string_view languagesKey = "AppleLanguages";

// The stored languages, the one in force first. Always in the shared store: a host that sets a default suite
// later would otherwise lose its users' language.
std::vector<std::string> appleLanguages() {
    const auto store = sharedStore();
    const auto value = store ? store->object(languagesKey) : std::nullopt;
    auto languages = value ? value->stringArrayValue() : std::nullopt;
    return std::move(languages).value_or(std::vector<std::string>());
}

// The code of the language in force, absent when none was stored. It is asked for with every text, so each
// thread keeps what it read until the store changes.
const std::optional<std::string>& storedLanguage() {
    thread_local std::optional<SecureDefaults::ChangeMark> seen;
    thread_local std::optional<std::string> language;
    const std::optional<SecureDefaults::ChangeMark> mark = SecureDefaults::shared().changeMark();
    if (mark && mark == seen) return language;
    const std::vector<std::string> languages = appleLanguages();
    language.reset();
    if (!languages.empty()) language = languages.front().substr(0, languages.front().find('-'));
    seen = mark;  // taken before the reading: a write in between is read once more
    return language;
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
    const std::optional<std::string>& stored = storedLanguage();
    return stored ? *stored : getDefaultAppLanguage();
}

void LocaleHelper::setAppleLanguageTo(std::string_view lang) {
    const PropertyValue::Array languages{lang, currentAppleLanguage()};
    if (const auto store = sharedStore()) store->set(languagesKey, languages);
    ScreenEnvironment::direction = Locale::isRightToLeft(lang) ? ScreenEnvironment::Direction::rightToLeft
                                                               : ScreenEnvironment::Direction::leftToRight;
}

void LocaleHelper::setDefaultAppLanguageTo(std::string_view lang) {
    defaultAppLanguage().store(std::string(lang));
}

std::string LocaleHelper::getDefaultAppLanguage() { return defaultAppLanguage().load(); }

std::string specialLocalizedString(const Bundle& bundle, std::string_view forKey,
                                   std::optional<std::string_view> value, std::string_view table) {
    const bool isConfiguration = table == Constants::configurationsTable;
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
