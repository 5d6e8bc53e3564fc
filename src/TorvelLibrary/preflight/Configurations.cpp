// The table "Configurations": its keys, and what each value will be taken for.
#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/Utils/Amounts.h"
#include "TorvelLibrary/Utils/WholeNumber.h"
#include "TorvelLibrary/preflight/Findings.h"
#include "TorvelLibrary/preflight/Patterns.h"
#include "TorvelPlatform/foundation/Predicate.h"
#include "TorvelPlatform/foundation/StringsTable.h"

#include <algorithm>
#include <span>

namespace torvel::preflight {
namespace {

enum class Kind { text, pattern, textLength, integer, flag };

struct Setting {
    std::string_view name;  // of the property
    std::string_view key;
    Kind kind;
    std::int64_t fallback = 0;  // of an integer
};

// What a text is for follows from its name, for the keys do not say it alone: the length of a card number is
// under "torvel_cardLength_regex".
constexpr Kind kindOf(std::string_view name, std::string_view key) {
    if (name.ends_with("Length")) return Kind::textLength;
    return key.ends_with("_regex") ? Kind::pattern : Kind::text;
}

std::span<const Setting> settings() {
#define TORVEL_TEXT(NAME, KEY) {#NAME, KEY, kindOf(#NAME, KEY)},
#define TORVEL_INTEGER(NAME, KEY, FALLBACK) {#NAME, KEY, Kind::integer, FALLBACK},
#define TORVEL_FLAG(NAME, KEY) {#NAME, KEY, Kind::flag},
    static constexpr Setting all[] = {TORVEL_CONFIGURATIONS(TORVEL_TEXT, TORVEL_INTEGER, TORVEL_FLAG)};
#undef TORVEL_TEXT
#undef TORVEL_INTEGER
#undef TORVEL_FLAG
    return all;
}

// Where the value of a missing key comes from.
std::string fallbackOf(const Setting& setting) {
    switch (setting.kind) {
        case Kind::integer:
            return std::to_string(setting.fallback);
        case Kind::textLength:
            return "0";
        case Kind::flag:
            return "false";
        case Kind::pattern:
            return "the key itself, a pattern that no typed text matches";
        case Kind::text:
            break;
    }
    return "the key itself, which users then read";
}

bool isWesternDigits(std::string_view text) {
    return std::ranges::any_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

class Configurations {
  public:
    explicit Configurations(const Host& host) : m_host(host) {}

    PreflightSubject examine() {
        unread();
        const auto table = m_host.bundle.directory() / "en.lproj" / fileName();
        if (!std::filesystem::exists(table)) {
            m_findings.warning("missing", {m_host.nameOf(table)},
                               {"the bundle has no such file",
                                "every pattern is its own key, so that no typed text is valid; lengths take "
                                "their fallbacks",
                                "copy the sample host's table and adapt it"});
            return std::move(m_findings).finish("no table");
        }
        if (!read(table)) return std::move(m_findings).finish("the table cannot be read");
        unknownKeys();
        for (const Setting& setting : settings()) examine(setting);
        currencies();
        return std::move(m_findings).finish(counted(m_table->size(), "value"));
    }

  private:
    static std::string fileName() { return std::string(Constants::configurationsTable) + ".strings"; }

    // Tables where the look-up never comes: it is always made in English.
    void unread() {
        std::vector<std::filesystem::path> places{m_host.bundle.directory() / fileName()};
        for (const std::string& language : m_host.languages()) {
            if (language != "en")
                places.push_back(m_host.bundle.directory() / (language + ".lproj") / fileName());
        }
        for (const auto& place : places) {
            if (std::filesystem::exists(place))
                m_findings.warning("never-read", {m_host.nameOf(place)},
                                   {"configuration is read in en.lproj alone", "this file is never looked at",
                                    "move its values to en.lproj/" + fileName()});
        }
    }

    bool read(const std::filesystem::path& path) {
        const std::string effect = "every value takes its fallback; no typed text is valid";
        const auto bytes = readReporting(m_host, path, effect, m_findings);
        if (!bytes) return false;
        std::vector<PropertyListKey> keys;
        auto table = StringsTable::parse(*bytes, &keys);
        if (!table) return reportUnparsed(table.error(), m_host.nameOf(path), effect, m_findings), false;
        m_table = std::move(table).value();
        m_file = KeyedFile(m_host.nameOf(path), std::move(keys));
        m_file.reportDuplicates(m_findings);
        return true;
    }

    void unknownKeys() {
        std::vector<std::string_view> known, unknown;
        for (const Setting& setting : settings()) known.push_back(setting.key);
        for (const auto& [key, value] : m_table->values()) {
            if (std::ranges::count(known, key) == 0) unknown.push_back(key);
        }
        std::ranges::sort(unknown);
        for (const std::string_view key : unknown) {
            const std::string_view meant = nearest(key, known);
            m_findings.warning("unknown-key", m_file.at(key),
                               {"the library asks for no such key", "the value is never read",
                                meant.empty() ? "remove it" : "did you mean " + inQuotes(meant) + "?"});
        }
    }

    void examine(const Setting& setting) {
        const std::string* const value = m_table->value(setting.key);
        // Only one flavour asks for its own key.
        const bool isForeign =
            setting.key.starts_with("dunmere_") && m_host.settings.wrapperConfig != WrapperConfig::Dunmere;
        if (value == nullptr && !isForeign)
            m_findings.warning("missing-key", m_file.at(setting.key),
                               {"the table has no such key",
                                std::string(setting.name) + " is " + fallbackOf(setting), "add the key"});
        if (value == nullptr) return;
        const Place place = m_file.at(setting.key);
        if (setting.kind == Kind::pattern) pattern(place, *value);
        if (setting.kind == Kind::integer || setting.kind == Kind::textLength) length(place, setting, *value);
        if (setting.kind == Kind::flag) flag(place, *value);
    }

    void pattern(const Place& place, const std::string& value) {
        if (const auto& fault = Predicate::matches(value).fault())
            m_findings.error("invalid-pattern", place,
                             {"the pattern does not compile: " + *fault, "no typed text is valid",
                              "correct it; a backslash is written twice in a strings file"});
        else if (const auto probe = endlessProbe(value))
            m_findings.error("endless-pattern", place,
                             {"the pattern backtracks without end on " + inQuotes(probe->substr(0, 12)) +
                                  "..., " + counted(probe->size(), "character") + " long",
                              "the screen stands still while it is tried, and then the text is not valid",
                              "let no repeated group hold another repetition of the same characters"});
    }

    void length(const Place& place, const Setting& setting, const std::string& value) {
        const auto number = wholeNumber(value);
        const std::string name(setting.name);
        if (!number)
            m_findings.error("not-a-number", place,
                             {inQuotes(value) + " is not a whole number", name + " is " + fallbackOf(setting),
                              "write digits alone, without spaces"});
        else if (*number <= 0)
            m_findings.warning(
                "no-length", place,
                {name + " is " + std::to_string(*number), "a field that takes it holds nothing",
                 "write the length that the field has"});
    }

    void flag(const Place& place, const std::string& value) {
        if (value == "true" || value == "false") return;
        m_findings.error("not-a-flag", place,
                         {inQuotes(value) + " is neither \"true\" nor \"false\"", "it reads as false",
                          "write true or false, in lower case"});
    }

    void currencies() {
        const auto setting = std::ranges::find(settings(), "currencyCode", &Setting::name);
        if (const std::string* const symbol = m_table->value(setting->key))
            currency(m_file.at(setting->key), *symbol);
        for (const auto& [from, to] : m_host.settings.currencyMap)
            currency({.key = "currencyMap " + inQuotes(from)}, to);
    }

    void currency(const Place& place, const std::string& symbol) {
        const auto locale = Locale::withCurrencySymbol(symbol);
        if (!locale) {
            m_findings.warning("unknown-currency", place,
                               {inQuotes(symbol) + " is the currency symbol of no locale",
                                "amounts are written as the device's own locale writes its currency",
                                "use a symbol that a locale has, or map it by setCurrencyMap()"});
            return;
        }
        const Locale kept = defaultLocale();
        setDefaultLocale(*locale);
        const std::string sample = getDisplayAmountWithoutCurrency("1234.5", symbol, true);
        setDefaultLocale(kept);
        const std::string resolved =
            inQuotes(symbol) + " is taken for the currency of " + locale->identifier();
        if (isWesternDigits(sample))
            m_findings.note("currency", place, resolved, "an amount reads " + sample);
        else
            m_findings.warning(
                "currency-digits", place,
                {resolved, "an amount reads " + sample + ", in digits that users may not expect",
                 "call setDefaultLocale() with the locale that is meant before the first amount"});
    }

    const Host& m_host;
    std::optional<StringsTable> m_table;
    KeyedFile m_file{"", {}};
    Findings m_findings{"configurations"};
};

}  // namespace

PreflightSubject examineConfigurations(const Host& host) { return Configurations(host).examine(); }

}  // namespace torvel::preflight
