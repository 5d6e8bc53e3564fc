#include "TorvelLibrary/TorvelLibrary.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/File.h"

#include <algorithm>

namespace torvel {
Guarded<std::shared_ptr<TorvelLibrary>>& TorvelLibrary::instance() {
    static auto* const slot =
        new Guarded<std::shared_ptr<TorvelLibrary>>;  // never destroyed: callbacks may run late
    return *slot;
}

std::shared_ptr<TorvelLibrary> TorvelLibrary::sharedInstance() {
    return instance().loadOr([] {
        LogUtils::e("TorvelLibrary not configured properly", {"TorvelLibrary", 196, 23, "sharedInstance()"});
        return std::make_shared<TorvelLibrary>("");
    });
}

std::shared_ptr<Session> TorvelLibrary::getAlamofireServiceManager(const URL& url) {
    const std::string host = url.host().value_or("");
    const std::lock_guard lock(m_managerCreation);
    std::shared_ptr<Session> session = manager();
    if (!session) {
        session = makeManager(host);
    } else {
        const auto& trust = session->serverTrustManager();
        if (!trust || trust->evaluator(host) != nullptr) return session;
        ServerTrustManager::Evaluators evaluators = trust->evaluators();
        evaluators[host] = std::make_shared<DisabledEvaluator>();
        session = makeSession(std::move(evaluators));
    }
    setManager(session);
    return session;
}

std::shared_ptr<Session> TorvelLibrary::makeManager(const std::string& host) const {
    if (isHttpsByPassRequired) return makeSession({{host, std::make_shared<DisabledEvaluator>()}});
    switch (sslType.kind()) {
        case SSlPinningType::Kind::certificate:
            return makeSession({{host, std::make_shared<PinnedCertificatesTrustEvaluator>(
                                           getSSLPinningCerts(sslType.pins()))}});
        case SSlPinningType::Kind::publicKey:
            return makeSession({{host, std::make_shared<PublicKeysTrustEvaluator>(
                                           getSSLPinningPublicKeys(sslType.pins()))}});
        case SSlPinningType::Kind::none:
            break;
    }
    return eventMonitors.empty() ? Session::defaultSession() : makeSession(nullptr);
}

std::shared_ptr<Session> TorvelLibrary::makeSession(
    std::shared_ptr<const ServerTrustManager> trustManager) const {
    URLSessionConfiguration configuration = URLSessionConfiguration::defaults();
    configuration.eventMonitors = eventMonitors;
    return std::make_shared<Session>(std::move(configuration), "org.alamofire.session.rootQueue",
                                     std::move(trustManager));
}

std::shared_ptr<Session> TorvelLibrary::makeSession(ServerTrustManager::Evaluators evaluators) const {
    return makeSession(std::make_shared<const ServerTrustManager>(true, std::move(evaluators)));
}

std::vector<SecCertificate> TorvelLibrary::getSSLPinningCerts(const std::vector<std::string>& files) {
    std::vector<SecCertificate> certificates;
    for (const std::string& file : files) {
        const auto path = Bundle::main().path(file, Constants::certificateType);
        if (!path) fatalError(file + " certficate not found in app bundle");
        const auto bytes = readFile(*path);
        auto certificate = bytes ? SecCertificate::createWithData(bytes.value()) : std::nullopt;
        if (!certificate) fatalError(file + " certficate is not valid");
        certificates.push_back(std::move(*certificate));
    }
    return certificates;
}

std::vector<SecKey> TorvelLibrary::getSSLPinningPublicKeys(const std::vector<std::string>& texts) {
    std::vector<SecKey> keys;
    for (const std::string& text : texts) {
        // The ASCII text itself is the key data; nothing is decoded here.
        const bool isASCII = std::all_of(text.begin(), text.end(),
                                         [](char c) { return static_cast<unsigned char>(c) < 0x80; });
        auto key = isASCII ? SecKey::createWithData(Data(text)) : std::nullopt;
        if (!key) fatalError("A pinned public key is not a PEM SubjectPublicKeyInfo");
        keys.push_back(std::move(*key));
    }
    return keys;
}

}  // namespace torvel
