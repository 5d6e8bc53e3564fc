#include "TorvelLibrary/Utils/LocaleHelper.h"

#include "TorvelLibrary/Utils/SharedStore.h"
#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/foundation/Locale.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/foundation/StringsTable.h"

#include <atomic>
#include <vector>

namespace torvel {
namespace {

// Counts what was set, so that a look-up sees a change without a lock.
std::atomic<unsigned> defaultAppLanguageChanges{0};

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

constexpr std::string_view configurations = "Configurations";

// Where the texts of a bundle's table are looked up, in this order. Each thread keeps what it found last
// until another bundle or table is asked for, or a language or the main bundle changes.
struct Tables {
    std::optional<SecureDefaults::ChangeMark> mark;
    unsigned defaultChanges;
    const Bundle* main;
    Bundle bundle;
    std::string name;
    std::optional<Bundle> mainFolder;
    Bundle callerFolder;

    const StringsTable* mainTable = mainFolder ? mainFolder->stringsTable(name) : nullptr;
    const StringsTable* callerTable = callerFolder.stringsTable(name);
};

Tables findTables(const Bundle& bundle, std::string_view table) {
    const auto mark = SecureDefaults::shared().changeMark();  // these two before what they tell of
    const unsigned defaultChanges = defaultAppLanguageChanges;
    const bool isConfiguration = table == configurations;
    const std::string current = isConfiguration ? "en" : LocaleHelper::currentAppleLanguage();
    const std::string fallback = isConfiguration ? "en" : LocaleHelper::getDefaultAppLanguage();
    return {.mark = mark,
            .defaultChanges = defaultChanges,
            .main = &Bundle::main(),
            .bundle = bundle,
            .name = std::string(table),
            .mainFolder = getMainBundlePath(current, fallback),
            .callerFolder = getCallerBundlePath(bundle, current, fallback)};
}

const Tables& tablesFor(const Bundle& bundle, std::string_view table) {
    thread_local std::optional<Tables> last;
    if (last && last->main == &Bundle::main() && last->bundle.isSame(bundle) && last->name == table &&
        last->defaultChanges == defaultAppLanguageChanges && last->mark &&
        last->mark == SecureDefaults::shared().changeMark())
        return *last;
    return last.emplace(findTables(bundle, table));
}

std::string answerOf(const StringsTable* table, std::string_view key, std::optional<std::string_view> value) {
    const std::string* const text = table != nullptr ? table->value(key) : nullptr;
    return text != nullptr ? *text : std::string(value.value_or(key));
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
    ++defaultAppLanguageChanges;
}

std::string LocaleHelper::getDefaultAppLanguage() { return defaultAppLanguage().load(); }

std::string specialLocalizedString(const Bundle& bundle, std::string_view forKey,
                                   std::optional<std::string_view> value, std::string_view table) {
    const Tables& tables = tablesFor(bundle, table);
    if (tables.mainFolder)
        if (std::string answer = answerOf(tables.mainTable, forKey, value); answer != forKey) return answer;
    return answerOf(tables.callerTable, forKey, value);
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
