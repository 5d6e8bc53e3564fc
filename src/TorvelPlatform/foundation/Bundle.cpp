#include "TorvelPlatform/foundation/Bundle.h"

#include "TorvelPlatform/foundation/BundleState.h"
#include "TorvelPlatform/foundation/Locale.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <forward_list>
#include <fstream>
#include <memory>
#include <mutex>

namespace torvel {
namespace fs = std::filesystem;

namespace {

fs::path resolved(const fs::path& directory) {
    std::error_code failed;
    fs::path path = fs::weakly_canonical(directory, failed);
    if (failed) path = fs::absolute(directory, failed);
    return path.has_filename() ? path : path.parent_path();  // "a/" names "a"
}

bool isDirectory(const fs::path& path) {
    std::error_code failed;
    return fs::is_directory(path, failed);
}

// The folder of a language or, subtag by subtag, of its base; empty when there is none.
std::string existingFolder(const fs::path& directory, std::string language) {
    while (true) {
        for (const char separator : {'-', '_'}) {
            std::replace_if(
                language.begin(), language.end(), [](char c) { return c == '-' || c == '_'; }, separator);
            const std::string folder = language + ".lproj";
            if (isDirectory(directory / folder)) return folder;
        }
        const std::size_t base = language.rfind('_');
        if (base == std::string::npos) return {};
        language.resize(base);
    }
}

std::string currentLanguageFolder(const fs::path& directory) {
    for (const std::string& language : Locale::preferredLanguages()) {
        if (std::string folder = existingFolder(directory, language); !folder.empty()) return folder;
    }
    return "en.lproj";
}

fs::path executable() {
    std::error_code failed;
    return fs::read_symlink("/proc/self/exe", failed);
}

const char* environment(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0' ? value : nullptr;
}

fs::path mainDirectory() {
    if (const char* given = environment("TORVEL_MAIN_BUNDLE")) return given;
    return executable().parent_path() / "Resources";
}

// The file that this code was mapped from: the shared library or, linked statically, the executable. Read
// from the kernel, because the loader's name for it may be relative to a folder that the process has left.
fs::path libraryFile() {
    const auto here = reinterpret_cast<std::uintptr_t>(&libraryFile);
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::uintptr_t first = 0, end = 0;
        const char* text = line.data() + line.size();
        const auto [dash, failed] = std::from_chars(line.data(), text, first, 16);
        if (failed != std::errc() || dash == text) continue;
        std::from_chars(dash + 1, text, end, 16);
        if (here < first || here >= end) continue;
        const std::size_t path = line.find('/');
        return path == std::string::npos ? fs::path() : fs::path(line.substr(path));
    }
    return {};
}

fs::path libraryDirectory() {
    if (const char* given = environment("TORVEL_LIBRARY_BUNDLE")) return given;
    const fs::path besideLibrary = libraryFile().parent_path() / TORVEL_DATA_BESIDE_LIBRARY;
    const fs::path besideExecutable = executable().parent_path().parent_path() / "share/torvel";
    for (const fs::path& place : {besideLibrary, besideExecutable}) {
        if (isDirectory(place)) return place;
    }
    return TORVEL_DATA;
}

// A name that stays inside the directory that it is looked up in.
bool isInnerName(std::string_view name) {
    if (name.empty() || name.find('\0') != std::string_view::npos) return false;
    const fs::path path(name);
    return std::find(path.begin(), path.end(), "..") == path.end();
}

// The two bundles of the process, found when first asked for.
std::atomic<const Bundle*> mainBundle{nullptr}, libraryBundle{nullptr};

// Those that were replaced are kept as well: references to them are out.
const Bundle* keep(Bundle bundle) {
    static auto& kept = *new std::forward_list<Bundle>;
    static std::mutex mutex;
    const std::lock_guard lock(mutex);
    return &kept.emplace_front(std::move(bundle));
}

}  // namespace

Bundle::Bundle(const fs::path& directory, std::string_view identifier) {
    const auto state = std::make_shared<State>();
    state->directory = resolved(directory);
    state->identifier = identifier.empty() ? state->directory.filename().native() : identifier;
    state->languageFolder = currentLanguageFolder(state->directory);
    m_state = state;
}

const Bundle& Bundle::found(std::atomic<const Bundle*>& place, Bundle (*find)()) {
    if (const Bundle* const known = place.load(std::memory_order_acquire)) return *known;
    const Bundle* const made = keep(find());
    const Bundle* earlier = nullptr;
    return place.compare_exchange_strong(earlier, made) ? *made : *earlier;
}

const Bundle& Bundle::main() {
    return found(mainBundle, [] { return Bundle(mainDirectory(), executable().filename().native()); });
}

void Bundle::setMain(const fs::path& directory, std::string_view identifier) {
    mainBundle = keep(Bundle(directory, identifier.empty() ? executable().filename().native() : identifier));
}

const Bundle& Bundle::library() {
    return found(libraryBundle, [] { return Bundle(libraryDirectory()); });
}

void Bundle::setLibrary(const fs::path& directory) { libraryBundle = keep(Bundle(directory)); }

std::optional<Bundle> Bundle::at(const fs::path& directory) {
    if (!isDirectory(directory)) return std::nullopt;
    return Bundle(directory);
}

const fs::path& Bundle::directory() const { return m_state->directory; }

const std::string& Bundle::identifier() const { return m_state->identifier; }

std::optional<std::string> Bundle::path(std::string_view forResource, std::string_view ofType) const {
    std::string name(forResource);
    if (!ofType.empty()) name.append(1, '.').append(ofType);
    if (!isInnerName(name)) return std::nullopt;
    for (const std::string& folder : {std::string("/"), '/' + m_state->languageFolder + '/'}) {
        std::string candidate = directory().native() + folder + name;
        std::error_code failed;
        if (fs::exists(candidate, failed)) return candidate;
    }
    return std::nullopt;
}

std::optional<URL> Bundle::url(std::string_view forResource, std::string_view withExtension) const {
    const std::optional<std::string> file = path(forResource, withExtension);
    if (!file) return std::nullopt;
    return URL::file(*file);
}

}  // namespace torvel
