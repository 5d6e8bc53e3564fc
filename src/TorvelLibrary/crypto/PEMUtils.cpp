#include "TorvelLibrary/crypto/PEMUtils.h"

#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/security/SecTrust.h"

namespace torvel {
namespace {

std::optional<SecKey> loadKey() {
    const std::string name = TorvelLibrary::sharedInstance()->encryptionCertName.value_or("");
    const std::optional<URL> file = getPathURLFromBundle(name, Constants::certificateType, Bundle::main());
    if (!file) return std::nullopt;
    const auto bytes = readFile(file->path());
    if (!bytes) fatalError(bytes.error().localizedDescription);
    const auto certificate = SecCertificate::createWithData(bytes.value());
    if (!certificate) fatalError("The encryption certificate " + name + " is not a DER certificate");
    const auto trust = SecTrust::createWithCertificates({*certificate}, SecPolicy::createBasicX509());
    if (!trust) fatalError("No trust can be built over the encryption certificate " + name);
    return trust->copyPublicKey();
}

}  // namespace

std::optional<SecKey> PEMUtils::getSecKey() {
    static auto* const secKey = new Guarded<std::optional<SecKey>>;
    return secKey->loadOr(loadKey);
}

}  // namespace torvel
