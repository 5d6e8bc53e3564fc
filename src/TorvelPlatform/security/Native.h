#pragma once  // internal

#include "TorvelPlatform/security/SecCertificate.h"
#include "TorvelPlatform/security/SecKey.h"

#include <memory>
#include <string>

#include <openssl/evp.h>
#include <openssl/x509.h>
#include <openssl/x509_vfy.h>

namespace torvel {

template <auto Free>
struct FreeWith {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};

using X509Ptr = std::unique_ptr<X509, FreeWith<X509_free>>;
using X509StorePtr = std::unique_ptr<X509_STORE, FreeWith<X509_STORE_free>>;
using X509StoreContextPtr = std::unique_ptr<X509_STORE_CTX, FreeWith<X509_STORE_CTX_free>>;
using KeyPtr = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using KeyContextPtr = std::unique_ptr<EVP_PKEY_CTX, FreeWith<EVP_PKEY_CTX_free>>;
using BioPtr = std::unique_ptr<BIO, FreeWith<BIO_free>>;

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
