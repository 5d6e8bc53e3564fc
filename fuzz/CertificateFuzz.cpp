#include "Fuzz.h"
#include "TorvelPlatform/security/SecTrust.h"

using namespace torvel;

void fuzz(std::string_view bytes) {
    if (const auto key = SecKey::createWithData(Data(bytes)))
        mustHold(SecKey::createWithData(key->subjectPublicKeyInfo()) == key);
    const auto certificate = SecCertificate::createWithData(Data(bytes));
    if (!certificate) return;
    certificate->subjectSummary();
    certificate->copyKey();
    auto trust = SecTrust::createWithCertificates({*certificate}, SecPolicy::createSSL("a.example"));
    trust->evaluate();
}
