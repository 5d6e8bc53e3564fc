#pragma once  // internal

#include "TorvelLibrary/preflight/Preflight.h"
#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/PropertyList.h"

#include <filesystem>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel::preflight {

// What a subject is examined with.
struct Host {
    const Bundle& bundle;
    const PreflightSettings& settings;

    // A path in the bundle as findings name it.
    std::string nameOf(const std::filesystem::path& file) const;
    // The files of a type (".strings") in a folder of the bundle, sorted.
    std::vector<std::filesystem::path> files(const std::filesystem::path& folder,
                                             std::string_view extension) const;
    // The languages that have a folder ("en" for "en.lproj"), sorted.
    std::vector<std::string> languages() const;
    // Whether the bundle has anything for a screen: a theme, fonts or interface files.
    bool hasScreen() const;
};

// Where a finding is.
struct Place {
    std::string file = {};
    int line = 0;
    std::string key = {};
};

// What a finding says.
struct Saying {
    std::string what, effect, remedy;
};

// The findings of one subject as they are made.
class Findings {
  public:
    explicit Findings(std::string subject) { m_report.name = std::move(subject); }

    void error(std::string_view rule, Place place, Saying saying);
    void warning(std::string_view rule, Place place, Saying saying);
    void note(std::string_view rule, Place place, std::string what, std::string effect);

    PreflightSubject finish(std::string summary) &&;

  private:
    void add(PreflightSeverity severity, std::string_view rule, Place place, Saying saying);
    PreflightSubject m_report;
};

// A file of keys and values with the places of its keys.
class KeyedFile {
  public:
    KeyedFile(std::string name, std::vector<PropertyListKey> keys)
        : m_name(std::move(name)), m_keys(std::move(keys)) {}

    const std::string& name() const { return m_name; }
    // Of the occurrence that counts, the last one.
    Place at(std::string_view key) const;
    // A warning for every key that the file holds again.
    void reportDuplicates(Findings& findings) const;

  private:
    std::string m_name;
    std::vector<PropertyListKey> m_keys;
};

// The bytes of a file; one that cannot be read is an error of the subject.
std::optional<Data> readReporting(const Host& host, const std::filesystem::path& file, std::string effect,
                                  Findings& findings);

// The finding for bytes that are no list, at the line that the reader gives.
void reportUnparsed(const PropertyListError& fault, const std::string& file, std::string effect,
                    Findings& findings);

// A property list of the bundle.
struct ListFile {
    PropertyList root;
    KeyedFile file;
};
std::optional<ListFile> readList(const Host& host, const std::filesystem::path& file, std::string effect,
                                 Findings& findings);

// The candidate that a misspelt word was probably meant to be; empty when none is near.
std::string_view nearest(std::string_view word, const std::vector<std::string_view>& candidates);

std::string inQuotes(std::string_view text);
// "1 path", "3 paths".
std::string counted(std::size_t count, std::string_view noun);

// The subjects, each in a file of its own.
PreflightSubject examineEndpoints(const Host& host);
PreflightSubject examineCertificates(const Host& host);
PreflightSubject examineConfigurations(const Host& host);
PreflightSubject examineColours(const Host& host);
PreflightSubject examineFonts(const Host& host);
PreflightSubject examineLocalisation(const Host& host);
PreflightSubject examineImages(const Host& host);

// Findings that check() does not let pass.
constexpr std::string_view encryptionOff = "certificates.encryption-off";
constexpr std::string_view unpinnedHost = "endpoints.unpinned-host";

}  // namespace torvel::preflight
