#include "TorvelLibrary/preflight/Preflight.h"
#include "TorvelPlatform/foundation/File.h"
#include "cli/Command.h"
#include "cli/DoctorReport.h"
#include "cli/Output.h"

#include <cstdlib>

namespace torvel::cli {
namespace {

constexpr Option options[] = {
    {"BUNDLE", "", "the folder of the host's resources", Occurs::once},
    {"--json", "", "the findings for a build pipeline, on one page of JSON"},
    {"--strict", "", "warnings count for the exit code too"},
    {"--server", "URL", "as setServerURL() gets it"},
    {"--cert", "NAME", "as setEncryptionCertName() gets it"},
    {"--pin-cert", "NAME", "a pinned certificate, NAME.der in the bundle; may be repeated", Occurs::anyTimes},
    {"--pin-key", "FILE", "a pinned public key, PEM; may be repeated", Occurs::anyTimes},
    {"--flavour", "NAME", "as setWrapperConfig() gets it (VelmMoney)", Occurs::atMostOnce, checkFlavour},
};

Outcome<PreflightSettings, std::string> settingsOf(const Arguments& arguments) {
    PreflightSettings settings;
    settings.serverURL = arguments.text("--server");
    settings.encryptionCertName = arguments.text("--cert");
    settings.wrapperConfig = arguments.flavour();
    if (arguments.has("--pin-cert"))
        settings.sslType = SSlPinningType::certificate(arguments.all("--pin-cert"));
    std::vector<std::string> keys;
    for (const std::string& file : arguments.all("--pin-key")) {
        auto text = readFile(file);
        if (!text) return "--pin-key: " + text.error().localizedDescription;
        keys.push_back(std::move(text).value().raw());
    }
    if (!keys.empty()) settings.sslType = SSlPinningType::publicKey(std::move(keys));
    return settings;
}

int doctor(const Arguments& arguments) {
    if (arguments.has("--pin-cert") && arguments.has("--pin-key"))
        return arguments.misused("--pin-cert and --pin-key exclude each other");
    const std::string directory = arguments.text("BUNDLE", "");
    const auto bundle = Bundle::at(directory);
    if (!bundle) return arguments.misused("there is no folder " + directory);
    const auto settings = settingsOf(arguments);
    if (!settings) return arguments.misused(settings.error());

    const DoctorReport report(Preflight::examine(*bundle, settings.value()));
    const bool coloured = resultsOnTerminal() && std::getenv("NO_COLOR") == nullptr;
    const std::string page =
        arguments.has("--json") ? report.json(bundle->directory().string()) : report.text(coloured);
    if (deliver(page) != exitOk) return exitUsage;
    const bool clean = report.count(PreflightSeverity::error) == 0 &&
                       (!arguments.has("--strict") || report.count(PreflightSeverity::warning) == 0);
    return clean ? exitOk : exitFailed;
}

}  // namespace

const Command doctorCommand = {
    "doctor",
    "find what is wrong with a host's resources before its users do",
    "Reads the bundle as the library would and says of each fault where it is, what happens at run time\n"
    "and how to mend it. Give the builder's settings too: pins and paths are checked against them.\n"
    "Exits with 0 when nothing is wrong, 1 when something is, 2 when it cannot look. For instance:\n\n"
    "  torvel doctor Resources --strict --server https://api.example.com/v1/ --cert server \\\n"
    "      --pin-cert server --pin-cert backup",
    options,
    doctor,
};

}  // namespace torvel::cli
