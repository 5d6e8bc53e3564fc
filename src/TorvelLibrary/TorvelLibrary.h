#pragma once

#include "TorvelLibrary/SSlPinningType.h"
#include "TorvelLibrary/Utils/FontSizesDependency.h"
#include "TorvelLibrary/WrapperConfig.h"
#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/foundation/URL.h"
#include "TorvelPlatform/http/Session.h"

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace torvel {

// The configuration of the process and the owner of its one HTTP session. Made by TorvelLibraryBuilder,
// reached through sharedInstance().
//
// The fields are plain: set them at start-up, before the first request. The shared instance and the session
// may be reached from any thread.
class TorvelLibrary {
  public:
    // A configuration with the defaults below and this server URL.
    explicit TorvelLibrary(std::string serverURLText) : serverURL(std::move(serverURLText)) {}

    // The installed instance. If the host built none: logs the error "TorvelLibrary not configured
    // properly", then installs and returns one with an empty server URL. Keep the pointer no longer than
    // needed: a later build() installs another instance.
    static std::shared_ptr<TorvelLibrary> sharedInstance();
    // Where the shared instance is kept; holds nullptr until one is installed.
    static Guarded<std::shared_ptr<TorvelLibrary>>& instance();

    // The base of relative targets.
    std::optional<std::string> serverURL;
    // The DER file of the main bundle, without extension, whose key seals requests. Absent: no encryption.
    std::optional<std::string> encryptionCertName;
    // The host's own token, which Utils::getBase64Token() gives back.
    std::optional<std::string> base64String;
    // Accepts every server. For development alone.
    bool isHttpsByPassRequired = false;
    // The flavour, which names the members of envelopes.
    WrapperConfig wrapperConfig = WrapperConfig::VelmMoney;
    // Kept for the host; the library does not read it.
    std::optional<std::string> appIDForEventsSDK;
    // The point sizes of the type scale; never nullptr.
    std::shared_ptr<const FontSizesDependency> fontSizesDependency =
        std::make_shared<FontSizesDependencyComponent>();
    // How the server is pinned.
    SSlPinningType sslType = SSlPinningType::none();
    // Currencies by name, with the symbol by which to find a locale that writes their amounts.
    std::optional<std::map<std::string, std::string>> currencyMap;
    std::optional<double> requestTimeoutInterval;  // seconds
    // Hear of every request of the session that is made next. Empty at first; with one, a session without
    // trust manager is the library's own instead of the shared default session.
    std::vector<std::shared_ptr<EventMonitor>> eventMonitors;

    // The session, nullptr until the first getAlamofireServiceManager().
    std::shared_ptr<Session> manager() const { return m_manager.load(); }
    void setManager(std::shared_ptr<Session> manager) { m_manager.store(std::move(manager)); }

    // The session for a request to `url`, made on first use by the settings in force then: bypass, pinned
    // certificates, pinned public keys, or the shared default session.
    //
    // Deliberate: pinning covers only the host of the URL that created the session. With a trust manager in
    // force, each further host is added WITHOUT trust evaluation, in a rebuilt session; hosts that load
    // images or fonts from other servers depend on it. Requests in flight keep the session that they use.
    std::shared_ptr<Session> getAlamofireServiceManager(const URL& url);

    // The certificates of the named "der" files of the main bundle, in order. A file that is missing or is
    // no certificate stops the process: it is a fault of the deployment.
    static std::vector<SecCertificate> getSSLPinningCerts(const std::vector<std::string>& files);
    // The keys of PEM texts, in order. A text that is no key stops the process.
    static std::vector<SecKey> getSSLPinningPublicKeys(const std::vector<std::string>& keys);

  private:
    std::shared_ptr<Session> makeManager(const std::string& host) const;
    std::shared_ptr<Session> makeSession(std::shared_ptr<const ServerTrustManager> trustManager) const;
    std::shared_ptr<Session> makeSession(ServerTrustManager::Evaluators evaluators) const;

    std::mutex m_managerCreation;  // one thread at a time decides whether to make or rebuild the session
    Guarded<std::shared_ptr<Session>> m_manager;
};

}  // namespace torvel
