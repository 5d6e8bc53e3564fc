#include "TorvelLibrary/preflight/Preflight.h"

#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/preflight/Findings.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/MainThread.h"

namespace torvel {
namespace {

std::string inOneLine(const PreflightFinding& finding) {
    std::string text = finding.file;
    if (finding.line != 0) text.append(":").append(std::to_string(finding.line));
    if (!finding.key.empty()) text.append(text.empty() ? "" : " ").append(finding.key);
    text.append(text.empty() ? "" : ": ").append(finding.what).append("; ").append(finding.effect);
    if (!finding.remedy.empty()) text.append(". To mend it: ").append(finding.remedy);
    return text + " [" + finding.rule + "]";
}

void log(const PreflightFinding& finding) {
    const LogSite site{"preflight/Preflight", "check()"};
    switch (finding.severity) {
        case PreflightSeverity::error:
            return LogUtils::e(inOneLine(finding), site);
        case PreflightSeverity::warning:
            return LogUtils::w(inOneLine(finding), site);
        case PreflightSeverity::note:
            return LogUtils::i(inOneLine(finding), site);
    }
}

// A host that never built the library is examined as one that set nothing.
PreflightSettings settingsInForce() {
    PreflightSettings settings;
    settings.encryptionCertName = "";
    const auto library = TorvelLibrary::instance().load();
    if (!library) return settings;
    settings.serverURL = library->serverURL;
    settings.encryptionCertName = library->encryptionCertName.value_or("");
    settings.sslType = library->sslType;
    settings.isHttpsByPassRequired = library->isHttpsByPassRequired;
    settings.wrapperConfig = library->wrapperConfig;
    if (library->currencyMap) settings.currencyMap = *library->currencyMap;
    return settings;
}

}  // namespace

std::vector<PreflightSubject> Preflight::examine(const Bundle& host, const PreflightSettings& settings) {
    expectMainThread("Preflight");
    const preflight::Host examined{host, settings};
    return {preflight::examineEndpoints(examined),      preflight::examineCertificates(examined),
            preflight::examineConfigurations(examined), preflight::examineColours(examined),
            preflight::examineFonts(examined),          preflight::examineLocalisation(examined),
            preflight::examineImages(examined)};
}

void Preflight::check() {
    std::optional<PreflightFinding> refusal;
    for (const PreflightSubject& subject : examine(Bundle::main(), settingsInForce())) {
        for (const PreflightFinding& finding : subject.findings) {
            log(finding);
            const bool refuses =
                finding.rule == preflight::encryptionOff || finding.rule == preflight::unpinnedHost;
            if (refuses && !refusal) refusal = finding;
        }
    }
    if (refusal) fatalError("Preflight refuses to start: " + inOneLine(*refusal));
}

std::string_view rawValue(PreflightSeverity severity) {
    constexpr std::string_view names[] = {"note", "warning", "error"};
    return names[static_cast<std::size_t>(severity)];
}

}  // namespace torvel
