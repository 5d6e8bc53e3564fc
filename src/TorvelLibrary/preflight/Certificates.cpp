// The certificates in the bundle, the pins and the key that seals requests.
#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/preflight/Findings.h"
#include "TorvelPlatform/foundation/DateFormatter.h"
#include "TorvelPlatform/security/SecCertificate.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>

namespace torvel::preflight {
namespace {

using namespace std::chrono;

constexpr auto notice = days{60};
constexpr int acceptableStrength = 112;  // bits, NIST SP 800-131A, from 2014 on
// The room that PKCS#1 v1.5 padding takes (RFC 8017, 7.2): an RSA block must hold more.
constexpr std::size_t paddingSize = 11;

std::string dateOf(sys_seconds time) { return DateFormatter("yyyy-MM-dd", Locale("en_US")).string(time); }

class Certificates {
  public:
    explicit Certificates(const Host& host) : m_host(host), m_settings(host.settings) {}

    PreflightSubject examine() {
        for (const auto& [name, file] : certificateFiles()) read(name, file);
        if (m_settings.encryptionCertName) encryption(*m_settings.encryptionCertName);
        const std::vector<std::string>& pins = m_settings.sslType.pins();
        if (m_settings.isHttpsByPassRequired)
            bypass();
        else if (m_settings.sslType.kind() == SSlPinningType::Kind::certificate)
            certificatePins(pins);
        else if (m_settings.sslType.kind() == SSlPinningType::Kind::publicKey)
            keyPins(pins);
        return std::move(m_findings)
            .finish(counted(m_certificates.size(), "certificate") + ", " + counted(pins.size(), "pin"));
    }

  private:
    using Kind = SSlPinningType::Kind;

    static std::string fileOf(std::string_view name) {
        return std::string(name) + "." + std::string(Constants::certificateType);
    }

    // The names that the host has the library look for, which decides what a fault in a file does.
    std::set<std::string> namesAskedFor() const {
        std::set<std::string> names;
        if (m_settings.sslType.kind() == Kind::certificate)
            names.insert(m_settings.sslType.pins().begin(), m_settings.sslType.pins().end());
        if (m_settings.encryptionCertName) names.insert(*m_settings.encryptionCertName);
        return names;
    }

    // All in the bundle's root, and those that are asked for wherever they are.
    std::map<std::string, std::filesystem::path> certificateFiles() const {
        std::map<std::string, std::filesystem::path> files;
        for (const auto& file : m_host.files(m_host.bundle.directory(), ".der")) files[file.stem()] = file;
        for (const std::string& name : namesAskedFor()) {
            if (const auto file = m_host.bundle.path(name, Constants::certificateType)) files[name] = *file;
        }
        return files;
    }

    void read(const std::string& name, const std::filesystem::path& file) {
        const std::string effect = namesAskedFor().contains(name)
                                       ? "the process stops when the certificate is first needed"
                                       : "the process stops if the host names this certificate";
        const auto bytes = readReporting(m_host, file, effect, m_findings);
        if (!bytes) return;
        const auto certificate = SecCertificate::createWithData(*bytes);
        if (!certificate) return notDER(m_host.nameOf(file), effect, *bytes);
        m_certificates.emplace(name, *certificate);
        dates(m_host.nameOf(file), *certificate);
        strength(m_host.nameOf(file), *certificate);
    }

    void notDER(const std::string& file, const std::string& effect, const Data& bytes) {
        const bool isPEM = !SecCertificate::createWithPEM(bytes).empty();
        m_findings.error(
            "not-der", {file},
            {isPEM ? "the certificate is PEM, not DER" : "the file is no DER certificate", effect,
             isPEM ? "openssl x509 -in " + file + " -outform der -out " + file
                   : "replace it by the server's certificate (torvel pins --save writes it)"});
    }

    void dates(const std::string& file, const SecCertificate& certificate) {
        const auto end = certificate.notAfter();
        const auto now = floor<seconds>(system_clock::now());
        if (!end || *end >= now + notice) return;
        const bool expired = *end < now;
        const std::string what = (expired ? "expired on " : "expires on ") + dateOf(*end);
        const Saying saying{
            what,
            "a server that shows it is refused from then on; as the encryption certificate it "
            "goes on working, for no date is looked at there",
            "ship its successor beside it now"};
        expired ? m_findings.error("expired", {file}, saying)
                : m_findings.warning("expiring", {file}, saying);
    }

    void strength(const std::string& file, const SecCertificate& certificate) {
        const auto key = certificate.copyKey();
        if (!key || key->securityBits() >= acceptableStrength) return;
        m_findings.error("weak-key", {file},
                         {"the key is " + key->description() + ", which can be broken",
                          "TLS refuses a server with it; what is sealed with it can be read by others",
                          "ask for a certificate with RSA 2048, P-256 or more"});
    }

    void encryption(const std::string& name) {
        const auto found = m_certificates.find(name);
        if (!m_host.bundle.path(name, Constants::certificateType)) {
            m_findings.error(
                "encryption-off", {.file = name.empty() ? "" : fileOf(name), .key = "encryptionCertName"},
                {name.empty() ? "no encryption certificate is named" : "the bundle has no such file",
                 "requests that should be sealed go out as they are, without a word",
                 "name it by setEncryptionCertName() and put its .der file into the bundle"});
        } else if (found != m_certificates.end()) {
            const auto key = found->second.copyKey();
            if (key && key->blockSize() > paddingSize) return;
            m_findings.error("envelope-key", {.file = fileOf(name), .key = "encryptionCertName"},
                             {"the key is " + (key ? key->description() : "of an unknown kind") +
                                  ", which cannot seal the envelope",
                              "the process stops at the first request that is sealed",
                              "use the certificate of an RSA key of 2048 bits or more"});
        }
    }

    void bypass() {
        m_findings.error("bypass", {.key = "isHttpsByPassRequired"},
                         {"the trust of servers is not evaluated", "anyone on the way can answer and read",
                          "leave setIsHttpsByPassRequired() out of what you ship"});
    }

    void certificatePins(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            if (m_host.bundle.path(name, Constants::certificateType)) continue;
            m_findings.error("pin-missing", {.file = fileOf(name), .key = name},
                             {"the bundle has no such file", "the process stops at the first request",
                              "put the certificate into the bundle, or drop the pin"});
        }
        backup(names);
    }

    void keyPins(const std::vector<std::string>& texts) {
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const Place place{.key = "pin " + std::to_string(i + 1)};
            const auto key = SecKey::createWithData(Data(texts[i]));
            if (!key)
                m_findings.error("pin-invalid", place,
                                 {"the text is no public key", "the process stops at the first request",
                                  "give the PEM text that torvel pins prints"});
            else if (!isBorne(*key))
                m_findings.warning(
                    "pin-unborne", place,
                    {"no certificate in the bundle bears this key (" + key->description() + ")",
                     "a mistyped key shows only when every server is refused",
                     "compare it with torvel pins --from HOST:PORT, or ship the certificate too"});
        }
        backup(texts);
    }

    bool isBorne(const SecKey& key) const {
        return std::ranges::any_of(m_certificates,
                                   [&key](const auto& each) { return each.second.copyKey() == key; });
    }

    // The same pin twice is no backup.
    void backup(const std::vector<std::string>& pins) {
        const std::size_t distinct = std::set<std::string>(pins.begin(), pins.end()).size();
        if (distinct == 0)
            m_findings.error("no-pin", {.key = "sslType"},
                             {"pinning is asked for without a pin", "every server is refused",
                              "name a pin, or use SSlPinningType::none()"});
        if (distinct == 1)
            m_findings.warning("no-backup-pin", {.key = "sslType"},
                               {"there is one pin and no backup",
                                "when the server's key is lost or replaced, every installed host is cut off",
                                "pin a second key that is kept offline"});
    }

    const Host& m_host;
    const PreflightSettings& m_settings;
    std::map<std::string, SecCertificate, std::less<>> m_certificates;  // by name
    Findings m_findings{"certificates"};
};

}  // namespace

PreflightSubject examineCertificates(const Host& host) { return Certificates(host).examine(); }

}  // namespace torvel::preflight
