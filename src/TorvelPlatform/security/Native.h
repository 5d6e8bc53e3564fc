#pragma once  // internal

#include "TorvelPlatform/security/OpenSSL.h"
#include "TorvelPlatform/security/SecCertificate.h"
#include "TorvelPlatform/security/SecKey.h"

#include <memory>
#include <string>

namespace torvel {

struct OpenSSLDeleter {
    void operator()(X509* certificate) const { X509_free(certificate); }
    void operator()(STACK_OF(X509) * certificates) const { sk_X509_pop_free(certificates, X509_free); }
    void operator()(X509_STORE* store) const { X509_STORE_free(store); }
    void operator()(X509_STORE_CTX* context) const { X509_STORE_CTX_free(context); }
    void operator()(GENERAL_NAMES* names) const { GENERAL_NAMES_free(names); }
    void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
    void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
    void operator()(BIO* stream) const { BIO_free(stream); }
};

using X509Ptr = std::unique_ptr<X509, OpenSSLDeleter>;
using X509StackPtr = std::unique_ptr<STACK_OF(X509), OpenSSLDeleter>;
using X509StorePtr = std::unique_ptr<X509_STORE, OpenSSLDeleter>;
using X509StoreContextPtr = std::unique_ptr<X509_STORE_CTX, OpenSSLDeleter>;
using GeneralNamesPtr = std::unique_ptr<GENERAL_NAMES, OpenSSLDeleter>;
using KeyPtr = std::unique_ptr<EVP_PKEY, OpenSSLDeleter>;
using KeyContextPtr = std::unique_ptr<EVP_PKEY_CTX, OpenSSLDeleter>;
using BioPtr = std::unique_ptr<BIO, OpenSSLDeleter>;

struct SecCertificate::Native {
    X509Ptr certificate;
    Data der;
};

// Takes the reference over. Absent when the object cannot be encoded.
std::optional<SecCertificate> wrapCertificate(X509Ptr certificate);
// Takes the reference over. Absent when the key has no SubjectPublicKeyInfo.
std::optional<SecKey> wrapKey(KeyPtr key);

// What was written to a memory BIO.
std::string textOf(BIO* memory);

// The process's trust store: SSL_CERT_FILE and SSL_CERT_DIR where they are set, else the system's hashed
// directory, whose certificates are read when they are needed; the bundle file, far slower to load, only
// where that directory is missing. Safe from any thread.
X509_STORE* systemTrustStore();

}  // namespace torvel
