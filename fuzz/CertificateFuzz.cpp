#include "Fuzz.h"
#include "TorvelPlatform/security/SecTrust.h"

using namespace torvel;

void fuzz(std::string_view bytes) {
    if (const auto key = SecKey::createWithData(Data(bytes))) {
        mustHold(SecKey::createWithData(key->subjectPublicKeyInfo()) == key);
        mustHold(SecKey::createWithData(Data(key->pem())) == key);
        key->description();
    }
    SecCertificate::createWithPEM(Data(bytes));
    const auto certificate = SecCertificate::createWithData(Data(bytes));
    if (!certificate) return;
    certificate->subjectSummary();
    certificate->subjectAlternativeNames();
    certificate->notAfter();
    certificate->copyKey();
    auto trust = SecTrust::createWithCertificates({*certificate}, SecPolicy::createSSL("a.example"));
    trust->evaluate();
}
