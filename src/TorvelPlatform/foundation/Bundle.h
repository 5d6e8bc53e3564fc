#pragma once

#include "TorvelPlatform/foundation/URL.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

class StringsTable;

// A directory of resources. Subdirectories named "<language>.lproj" hold the resources of one language.
// Cheap to copy; two values are equal when they name the same directory. Safe from any thread.
class Bundle {
  public:
    // The host application's resources: the directory given to setMain, else the environment variable
    // TORVEL_MAIN_BUNDLE, else "Resources" beside the executable. The identifier names the host's own
    // folders: the one given to setMain, else the executable's name. The reference stays valid; another main
    // bundle is another object.
    static const Bundle& main();
    static void setMain(const std::filesystem::path& directory, std::string_view identifier = {});

    // The library's own resources: the directory given to setLibrary, else the environment variable
    // TORVEL_LIBRARY_BUNDLE, else "../share/torvel" beside the executable, else the installed place, else
    // the build tree. The reference stays valid.
    static const Bundle& library();
    static void setLibrary(const std::filesystem::path& directory);

    // The bundle at a directory; absent when there is no such directory.
    static std::optional<Bundle> at(const std::filesystem::path& directory);

    // Absolute, symbolic links resolved as far as it exists.
    const std::filesystem::path& directory() const;
    // That of the main bundle is described there; any other bundle's is the name of its directory.
    const std::string& identifier() const;

    // The resource "<name>.<type>" (or "<name>" when the type is empty) in the bundle's root, then in the
    // folder of its current language: the first preferred language that has one, itself ("fr-CA.lproj",
    // "fr_CA.lproj") or by its base ("fr.lproj"), else "en". A directory is a resource too. The name may lead
    // through subdirectories ("a/b"), but not by "..". Absent when there is none.
    std::optional<std::string> path(std::string_view forResource, std::string_view ofType) const;
    std::optional<URL> url(std::string_view forResource, std::string_view withExtension) const;

    // The text under a key of a strings table ("<table>.strings"; no name means "Localizable"): the table in
    // the folder of the current language, else the one in the root. Without such a key `value`, and without
    // that the key itself. A malformed table is reported to the diagnostics once and counts as absent.
    //
    // Every look-up of the process comes through here, so that one replacement can answer them all. A table
    // is read once and kept as long as any copy of the bundle lives.
    std::string localizedString(std::string_view forKey, std::optional<std::string_view> value,
                                std::string_view table = {}) const;

    // What localizedString() does while no replacement is installed, for replacements to fall back on.
    std::string platformLocalizedString(std::string_view forKey, std::optional<std::string_view> value,
                                        std::string_view table) const;
    // The table that platformLocalizedString() looks in; nullptr when there is none. Valid as long as any
    // copy of the bundle lives.
    const StringsTable* stringsTable(std::string_view name) const;
    // Installs a replacement, or removes it (nullptr). Returns the one in force before.
    using LookUp = std::string (*)(const Bundle& bundle, std::string_view forKey,
                                   std::optional<std::string_view> value, std::string_view table);
    static LookUp replaceLookUp(LookUp replacement);

    // The folder of a language ("fr.lproj") as a bundle; absent when there is none. Kept like the tables.
    std::optional<Bundle> languageBundle(std::string_view language) const;

    bool operator==(const Bundle& other) const { return directory() == other.directory(); }
    // Whether the two are copies of one value, which share their tables.
    bool isSame(const Bundle& other) const { return m_state == other.m_state; }

  private:
    struct State;
    explicit Bundle(const std::filesystem::path& directory, std::string_view identifier = {});
    static const Bundle& found(std::atomic<const Bundle*>& place, Bundle (*find)());
    std::shared_ptr<const State> m_state;
};

// The names by which resources find a C++ type: its module and its own name ("Wallet", "LoginView"), as
// TORVEL_TYPE(Wallet, LoginView) gives them, and the bundle that holds its resources (specialise TypeName
// where that is not the host's main bundle). The macro stands at the scope of the type's own namespace,
// whichever that is, and takes the unqualified name.
struct RegisteredType {
    std::string_view module;
    std::string_view name;
};

#define TORVEL_TYPE(MODULE, TYPE)                                                           \
    [[maybe_unused]] constexpr ::torvel::RegisteredType torvelRegisteredType(const TYPE*) { \
        return {#MODULE, #TYPE};                                                            \
    }

template <class T>
requires requires(const T* type) { torvelRegisteredType(type); }
struct TypeName {
    static constexpr std::string_view module = torvelRegisteredType(static_cast<const T*>(nullptr)).module;
    static constexpr std::string_view name = torvelRegisteredType(static_cast<const T*>(nullptr)).name;
    static Bundle bundle() { return Bundle::main(); }
};

}  // namespace torvel
