#pragma once

#include "TorvelLibrary/SSlPinningType.h"
#include "TorvelLibrary/WrapperConfig.h"
#include "TorvelPlatform/foundation/Bundle.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// How much a finding weighs.
enum class PreflightSeverity {
    note,     // worth knowing; nothing is wrong
    warning,  // works, perhaps not as meant
    error,    // some part of the host will not work, or the process will stop
};

// One thing about a host's resources that its developer should know, in sentences.
struct PreflightFinding {
    PreflightSeverity severity;  // its weight
    std::string rule;            // which check it is, "endpoints.duplicate-key"; does not change
    std::string file;            // from the bundle's folder; empty when it is about no file
    int line = 0;                // in the file, from 1; 0 where that is not known
    std::string key;             // in the file, or the setting it is about; may be empty
    std::string what;            // what was found
    std::string effect;          // what happens at run time
    std::string remedy;          // how to mend it; empty in a note
};

// What was found about one subject.
struct PreflightSubject {
    std::string name;                        // "endpoints", "certificates", ...
    std::string summary;                     // what was looked at, for one line
    std::vector<PreflightFinding> findings;  // by file and line
};

// The builder's settings that resources are checked against.
struct PreflightSettings {
    std::optional<std::string> serverURL;             // absent: endpoints are not joined to it
    std::optional<std::string> encryptionCertName;    // absent: whether requests are sealed is not asked
    SSlPinningType sslType = SSlPinningType::none();  // the pins
    bool isHttpsByPassRequired = false;               // whether trust is evaluated at all
    WrapperConfig wrapperConfig = WrapperConfig::VelmMoney;  // the flavour
    std::map<std::string, std::string> currencyMap;          // symbols that stand for others
};

// Looks at a host's resources as the library would and says what will go wrong with them at run time. None
// of it stops the process, but for check(); nothing that was looked at is kept.
class Preflight {
  public:
    // One report a subject, always of all subjects and in the same order. For the main thread, before
    // amounts are written: it borrows the money locale.
    static std::vector<PreflightSubject> examine(const Bundle& host, const PreflightSettings& settings);

    // For debug builds, right after TorvelLibraryBuilder::build(): examines the main bundle with the
    // settings of the installed library and logs the findings. Where requests would silently go out
    // unsealed, or a host of the endpoint table unpinned although another is pinned, it stops the process.
    static void check();
};

// "error", "warning" or "note".
std::string_view rawValue(PreflightSeverity severity);

}  // namespace torvel
