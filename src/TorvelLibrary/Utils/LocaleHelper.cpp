#include "TorvelLibrary/Utils/LocaleHelper.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/SharedStore.h"
#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/foundation/Locale.h"
#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/foundation/StringsTable.h"

#include <atomic>

namespace torvel {
namespace {

// Counts what was set, so that a look-up sees a change without a lock.
std::atomic<unsigned> defaultAppLanguageChanges{0};

Guarded<std::string>& defaultAppLanguage() {
    static auto& language = *new Guarded<std::string>("en");
    return language;
}

constexpr std::string_view languagesKey = "AppleLanguages";

// The code of the stored language, absent when there is none, under the mark that it was read at; without a
// mark it is not to be kept.
struct StoredLanguage {
    std::optional<SecureDefaults::ChangeMark> mark;
    std::optional<std::string> code;
};

// Always from the shared store: a host that sets a default suite later would otherwise lose its users'
// language.
StoredLanguage readLanguage() {
    const auto store = sharedStore();
    if (!store) return {};
    const auto mark = store->changeMark();  // before the reading: a write in between is read once more
    const auto outcome = store->read(languagesKey);
    if (!outcome) return {};  // which may pass
    const auto languages = outcome.value() ? outcome.value()->stringArrayValue() : std::nullopt;
    if (!languages || languages->empty()) return {mark, std::nullopt};
    return {mark, languages->front().substr(0, languages->front().find('-'))};
}

// It is asked for with every text, so each thread keeps what it read until the store changes.
const StoredLanguage& storedLanguage() {
    thread_local StoredLanguage last;
    if (!last.mark || last.mark != SecureDefaults::shared().changeMark()) last = readLanguage();
    return last;
}

std::optional<Bundle> languageFolder(const Bundle& bundle, std::string_view current,
                                     std::string_view fallback) {
    std::optional<Bundle> folder = bundle.languageBundle(current);
    return folder ? folder : bundle.languageBundle(fallback);
}

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
    const auto mark = storedLanguage().mark;  // these two before what they tell of
    const unsigned defaultChanges = defaultAppLanguageChanges;
    const bool isConfiguration = table == Constants::configurationsTable;
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
    expectMainThread("LocaleHelper::doTheSwizzling()");
    if (Bundle::replaceLookUp(specialLocalizedString) != nullptr) Bundle::replaceLookUp(nullptr);
}

std::string LocaleHelper::currentAppleLanguage() {
    const std::optional<std::string>& stored = storedLanguage().code;
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
