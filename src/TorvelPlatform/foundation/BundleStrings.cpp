// The localised texts of bundles.
#include "TorvelPlatform/foundation/BundleState.h"
#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/foundation/File.h"

#include <atomic>

namespace torvel {
namespace {

std::atomic<Bundle::LookUp> lookUpReplacement{nullptr};

// The first of the files that holds a table.
std::optional<StringsTable> readTable(const std::filesystem::path& directory, std::string_view languageFolder,
                                      std::string_view name) {
    const std::string file = std::string(name) + ".strings";
    for (const auto& path : {directory / languageFolder / file, directory / file}) {
        std::error_code failed;
        if (!std::filesystem::exists(path, failed)) continue;
        const auto bytes = readFile(path.native());
        auto table = bytes ? StringsTable::parse(bytes.value())
                           : PropertyListError{bytes.error().localizedDescription};
        if (table) return std::move(table).value();
        reportDiagnostic(path.native() + ": " + table.error().description);
    }
    return std::nullopt;
}

}  // namespace

std::string Bundle::localizedString(std::string_view forKey, std::optional<std::string_view> value,
                                    std::string_view table) const {
    const LookUp replacement = lookUpReplacement.load(std::memory_order_relaxed);
    return replacement != nullptr ? replacement(*this, forKey, value, table)
                                  : platformLocalizedString(forKey, value, table);
}

std::string Bundle::platformLocalizedString(std::string_view forKey, std::optional<std::string_view> value,
                                            std::string_view table) const {
    const StringsTable* const texts = stringsTable(table);
    const std::string* const text = texts != nullptr ? texts->value(forKey) : nullptr;
    return text != nullptr ? *text : std::string(value.value_or(forKey));
}

Bundle::LookUp Bundle::replaceLookUp(LookUp replacement) { return lookUpReplacement.exchange(replacement); }

const StringsTable* Bundle::stringsTable(std::string_view name) const {
    if (name.empty()) name = "Localizable";
    if (name.find('/') != std::string_view::npos) return nullptr;  // tables are not looked for elsewhere
    const std::lock_guard lock(m_state->mutex);
    auto found = m_state->tables.find(name);
    if (found == m_state->tables.end())
        found = m_state->tables
                    .emplace(std::string(name), readTable(m_state->directory, m_state->languageFolder, name))
                    .first;
    return found->second ? &*found->second : nullptr;
}

std::optional<Bundle> Bundle::languageBundle(std::string_view language) const {
    if (language.empty() || language.find('/') != std::string_view::npos) return std::nullopt;
    const std::lock_guard lock(m_state->mutex);
    auto found = m_state->languages.find(language);
    if (found == m_state->languages.end()) {
        const std::string name(language);
        found = m_state->languages.emplace(name, Bundle::at(m_state->directory / (name + ".lproj"))).first;
    }
    return found->second;
}

}  // namespace torvel
