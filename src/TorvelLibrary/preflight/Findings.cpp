#include "TorvelLibrary/preflight/Findings.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/Text.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <numeric>

namespace torvel::preflight {
namespace {

namespace fs = std::filesystem;

// Insertions, deletions and replacements between two words, without regard to case.
std::size_t distance(std::string_view a, std::string_view b) {
    const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
    std::vector<std::size_t> row(b.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < b.size(); ++j) {
            const std::size_t replaced = diagonal + (lower(a[i]) == lower(b[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
        }
    }
    return row.back();
}

}  // namespace

std::string Host::nameOf(const fs::path& file) const {
    return file.lexically_relative(bundle.directory()).generic_string();
}

std::vector<fs::path> Host::files(const fs::path& folder, std::string_view extension) const {
    std::vector<fs::path> found;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->path().extension() == extension) found.push_back(entry->path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

bool Host::exists(const fs::path& file) {
    std::error_code error;
    return fs::exists(file, error);
}

std::vector<std::string> Host::languages() const {
    std::vector<std::string> names;
    for (const fs::path& folder : files(bundle.directory(), ".lproj")) names.push_back(folder.stem());
    return names;
}

bool Host::hasScreen() const {
    const auto any = [this](std::string_view extension) {
        return !files(bundle.directory(), extension).empty();
    };
    return bundle.path(Constants::colorTheme, Constants::propertyListType) || any(".ttf") || any(".ui");
}

void Findings::error(std::string_view rule, Place place, Saying saying) {
    add(PreflightSeverity::error, rule, std::move(place), std::move(saying));
}

void Findings::warning(std::string_view rule, Place place, Saying saying) {
    add(PreflightSeverity::warning, rule, std::move(place), std::move(saying));
}

void Findings::note(std::string_view rule, Place place, std::string what, std::string effect) {
    add(PreflightSeverity::note, rule, std::move(place), {std::move(what), std::move(effect), ""});
}

void Findings::add(PreflightSeverity severity, std::string_view rule, Place place, Saying saying) {
    m_report.findings.push_back({severity, m_report.name + "." + std::string(rule), std::move(place.file),
                                 place.line, std::move(place.key), std::move(saying.what),
                                 std::move(saying.effect), std::move(saying.remedy)});
}

PreflightSubject Findings::finish(std::string summary) && {
    m_report.summary = std::move(summary);
    const auto place = [](const PreflightFinding& finding) {
        constexpr int last = std::numeric_limits<int>::max();
        return std::pair<const std::string&, int>(finding.file, finding.line == 0 ? last : finding.line);
    };
    std::ranges::stable_sort(m_report.findings, {}, place);
    return std::move(m_report);
}

Place KeyedFile::at(std::string_view key) const {
    const auto found = std::find_if(m_keys.rbegin(), m_keys.rend(),
                                    [key](const PropertyListKey& each) { return each.key == key; });
    return {m_name, found == m_keys.rend() ? 0 : found->line, std::string(key)};
}

void KeyedFile::reportDuplicates(Findings& findings) const {
    ByText<int> firstLines;
    for (const PropertyListKey& each : m_keys) {
        const auto [first, isNew] = firstLines.emplace(each.key, each.line);
        if (isNew) continue;
        findings.warning(
            "duplicate-key", {m_name, each.line, each.key},
            {"the key stands in line " + std::to_string(first->second) + " already",
             "the last value counts; the others are dropped without a word", "keep one of them"});
    }
}

std::optional<Data> readReporting(const Host& host, const fs::path& file, std::string effect,
                                  Findings& findings) {
    auto bytes = readFile(file.native());
    if (bytes) return std::move(bytes).value();
    findings.error("unreadable", {host.nameOf(file)},
                   {bytes.error().localizedDescription, std::move(effect), "make it a readable file"});
    return std::nullopt;
}

void reportUnparsed(const PropertyListError& fault, const std::string& file, std::string effect,
                    Findings& findings) {
    constexpr std::string_view prefix = "line ";
    std::string_view description = fault.description;
    int line = 0;
    if (description.starts_with(prefix)) {
        const char* const end = description.data() + description.size();
        const char* const rest = std::from_chars(description.data() + prefix.size(), end, line).ptr;
        description.remove_prefix(std::min<std::size_t>(rest - description.data() + 2, description.size()));
    }
    findings.error("unparsed", {file, line},
                   {std::string(description), std::move(effect), "correct the file's syntax"});
}

std::optional<ListFile> readList(const Host& host, const fs::path& file, std::string effect,
                                 Findings& findings) {
    const auto bytes = readReporting(host, file, effect, findings);
    if (!bytes) return std::nullopt;
    std::vector<PropertyListKey> keys;
    auto list = PropertyList::parse(*bytes, &keys);
    if (!list) {
        reportUnparsed(list.error(), host.nameOf(file), std::move(effect), findings);
        return std::nullopt;
    }
    ListFile read{std::move(list).value(), KeyedFile(host.nameOf(file), std::move(keys))};
    read.file.reportDuplicates(findings);
    return read;
}

std::string_view nearest(std::string_view word, const std::vector<std::string_view>& candidates) {
    constexpr std::size_t longest = 100;  // of a word that someone typed
    std::string_view best;
    std::size_t bestDistance = word.size() > longest ? 0 : word.size() / 3 + 1;
    for (const std::string_view candidate : candidates) {
        const std::size_t d = distance(word, candidate);
        if (d >= bestDistance) continue;
        bestDistance = d;
        best = candidate;
    }
    return best;
}

std::string inQuotes(std::string_view text) { return std::string(1, '"').append(text).append(1, '"'); }

std::string counted(std::size_t count, std::string_view noun) {
    return std::to_string(count) + " " + std::string(noun) + (count == 1 ? "" : "s");
}

}  // namespace torvel::preflight
