// The texts of all languages, side by side.
#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/preflight/InterfaceFile.h"
#include "TorvelPlatform/foundation/StringsTable.h"

#include <algorithm>
#include <map>
#include <set>

namespace torvel::preflight {
namespace {

// The placeholders of a format text, each as its position and what it takes: "1@", "2d". Positions without a
// number count up; flags, widths and precisions do not matter to the caller.
std::multiset<std::string> placeholders(std::string_view text) {
    constexpr std::string_view flags = "-+0#'", digits = "0123456789", lengths = "hlLqjzt";
    std::multiset<std::string> found;
    int next = 0;
    for (std::size_t i = text.find('%'); i != text.npos && i + 1 < text.size(); i = text.find('%', i + 1)) {
        const auto skip = [&](std::string_view set) {
            const std::size_t begin = i + 1;
            i = std::min(text.find_first_not_of(set, begin), text.size()) - 1;
            return text.substr(begin, i + 1 - begin);
        };
        const std::string_view number = skip(digits);
        const bool isNumbered = !number.empty() && text.substr(i + 1).starts_with('$');
        if (isNumbered) ++i;
        skip(flags), skip(digits), skip("."), skip(digits), skip(lengths);
        const char kind = i + 1 < text.size() ? text[i + 1] : '\0';
        if (kind == '%') ++i;  // a percent sign
        if (std::string_view("@dDiuUxXoOfFeEgGaAcCsSp").find(kind) == text.npos || kind == '\0') continue;
        found.insert((isNumbered ? std::string(number) : std::to_string(++next)) + kind);
    }
    return found;
}

std::string listed(const std::multiset<std::string>& placeholders) {
    std::string text;
    for (const std::string& each : placeholders)
        text.append(text.empty() ? "%" : ", %")
            .append(each.substr(0, each.size() - 1))
            .append("$")
            .append(1, each.back());
    return text.empty() ? "none" : text;
}

struct Table {
    StringsTable texts;
    KeyedFile file;
};

class Localisation {
  public:
    explicit Localisation(const Host& host) : m_host(host) {}

    PreflightSubject examine() {
        folders();
        for (const std::string& language : m_host.languages()) read(language);
        for (const auto& [name, languages] : m_tables) {
            compare(name, languages);
            m_keys += keysOf(languages).size();
        }
        interfaces();
        return std::move(m_findings)
            .finish(counted(m_keys, "text") + " in " + counted(m_host.languages().size(), "language"));
    }

  private:
    using Languages = std::map<std::string, Table>;  // of one table

    void folders() {
        const std::vector<std::string> languages = m_host.languages();
        const auto has = [&](std::string_view name) { return std::ranges::count(languages, name) > 0; };
        for (const std::string& language : languages) {
            const std::string base = language.substr(0, language.find('-'));
            if (base != language)
                m_findings.warning(
                    "region-folder", {language + ".lproj"},
                    {"the folder names a region", "languages in force have none: it is never read",
                     has(base) ? "move its texts to " + base + ".lproj" : "call it " + base + ".lproj"});
        }
        std::set<std::string> fonts;
        for (const auto& file : m_host.files(m_host.bundle.directory(), ".ttf")) {
            const std::string name = file.stem();
            if (name.ends_with("_regular")) fonts.insert(name.substr(0, name.find('_')));
        }
        for (const std::string& language : fonts) {
            if (has(language) || language == m_default) continue;
            m_findings.warning("no-folder", {language + ".lproj"},
                               {"there are fonts for " + language + " but no texts",
                                "in this language screens show those of " + m_default, "add the folder"});
        }
        if (!languages.empty() && !has(m_default))
            m_findings.error("no-default-folder", {m_default + ".lproj"},
                             {"the default language has no folder",
                              "a language without one shows the keys instead of texts", "add the folder"});
    }

    void read(const std::string& language) {
        const std::string effect = "every text of the table is shown as its key in this language";
        for (const auto& path : m_host.files(m_host.bundle.directory() / (language + ".lproj"), ".strings")) {
            if (path.stem() == Constants::configurationsTable) continue;
            const auto bytes = readReporting(m_host, path, effect, m_findings);
            if (!bytes) continue;
            std::vector<PropertyListKey> keys;
            auto texts = StringsTable::parse(*bytes, &keys);
            if (!texts) {
                reportUnparsed(texts.error(), m_host.nameOf(path), effect, m_findings);
                m_unparsed.insert(path.stem().string() + "/" + language);
                continue;
            }
            KeyedFile file(m_host.nameOf(path), std::move(keys));
            file.reportDuplicates(m_findings);
            m_tables[path.stem()].emplace(language, Table{std::move(texts).value(), std::move(file)});
        }
    }

    static std::set<std::string> keysOf(const Languages& languages) {
        std::set<std::string> keys;
        for (const auto& [language, table] : languages) {
            for (const auto& [key, text] : table.texts.values()) keys.insert(key);
        }
        return keys;
    }

    void compare(const std::string& name, const Languages& languages) {
        const std::set<std::string> keys = keysOf(languages);
        for (const std::string& language : m_host.languages()) {
            if (languages.contains(language) || m_unparsed.contains(name + "/" + language)) continue;
            m_findings.warning(
                "missing-table", {language + ".lproj/" + name + ".strings"},
                {"the language has no such table, others have",
                 "its " + counted(keys.size(), "text") + " are shown as their keys", "add the file"});
        }
        for (const std::string& key : keys) compareKey(key, languages);
    }

    void compareKey(const std::string& key, const Languages& languages) {
        const auto reference = std::ranges::find_if(
            languages, [&](const auto& each) { return each.second.texts.value(key) != nullptr; });
        const auto preferred = languages.find(m_default);
        const auto& [language, table] =
            preferred != languages.end() && preferred->second.texts.value(key) != nullptr ? *preferred
                                                                                          : *reference;
        const auto expected = placeholders(*table.texts.value(key));
        for (const auto& [other, otherTable] : languages) {
            const std::string* const text = otherTable.texts.value(key);
            if (text == nullptr)
                m_findings.warning("missing-key", {otherTable.file.name(), 0, key},
                                   {"the key stands in " + table.file.name() + " only",
                                    "users of this language read the key itself", "translate it"});
            else if (const auto found = placeholders(*text); found != expected)
                m_findings.error(
                    "placeholders", otherTable.file.at(key),
                    {"the placeholders are " + listed(found) + ", in " + language + " " + listed(expected),
                     "values are missing in the text or taken for another kind, which may crash",
                     "use the same placeholders, numbered (%1$@) where their order differs"});
        }
    }

    void interfaces() {
        std::set<std::string> known;
        for (const auto& [name, languages] : m_tables) known.merge(keysOf(languages));
        for (const InterfaceFile& file : interfaceFiles(m_host)) {
            for (const auto& [text, line] : file.texts) {
                if (!known.contains(text))
                    m_findings.warning("interface-key", {file.name, line, text},
                                       {"no table has this key", "it is shown as it stands in every language",
                                        "add it to the tables, or mark it notr=\"true\""});
            }
        }
    }

    const Host& m_host;
    const std::string m_default = LocaleHelper::getDefaultAppLanguage();
    std::map<std::string, Languages> m_tables;
    std::set<std::string> m_unparsed;  // "<table>/<language>"
    std::size_t m_keys = 0;
    Findings m_findings{"localisation"};
};

}  // namespace

PreflightSubject examineLocalisation(const Host& host) { return Localisation(host).examine(); }

}  // namespace torvel::preflight
