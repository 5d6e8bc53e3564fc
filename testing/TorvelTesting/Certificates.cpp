#include "TorvelTesting/Certificates.h"

#include <atomic>
#include <stdexcept>

#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <openssl/x509v3.h>

namespace torvel::testing {
namespace {

template <auto Free>
struct FreeWith {
    template <class T>
    void operator()(T* object) const {
        Free(object);
    }
};
using KeyPtr = std::unique_ptr<EVP_PKEY, FreeWith<EVP_PKEY_free>>;
using KeyContextPtr = std::unique_ptr<EVP_PKEY_CTX, FreeWith<EVP_PKEY_CTX_free>>;
using CertificatePtr = std::unique_ptr<X509, FreeWith<X509_free>>;
using BioPtr = std::unique_ptr<BIO, FreeWith<BIO_free>>;

void require(bool ok, const char* what) {
    if (!ok) throw std::runtime_error(std::string(what) + ": " + ERR_error_string(ERR_get_error(), nullptr));
}

BioPtr reading(std::string_view text) {
    return BioPtr(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
}

std::string contentOf(BIO* bio) {
    char* start = nullptr;
    const long size = BIO_get_mem_data(bio, &start);
    return {start, static_cast<std::size_t>(size)};
}

KeyPtr privateKeyOf(const Identity& identity) {
    return KeyPtr(PEM_read_bio_PrivateKey(reading(identity.privateKeyPem).get(), nullptr, nullptr, nullptr));
}

KeyPtr makeKey(const CertificateRequest& request) {
    if (request.keyOf != nullptr) return privateKeyOf(*request.keyOf);
    if (request.rsaBits > 0) return KeyPtr(EVP_RSA_gen(static_cast<unsigned>(request.rsaBits)));
    return KeyPtr(EVP_EC_gen("P-256"));
}

void addExtension(X509* certificate, X509* issuer, int kind, const std::string& value) {
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* const extension = X509V3_EXT_conf_nid(nullptr, &context, kind, value.c_str());
    require(extension != nullptr, value.c_str());
    X509_add_ext(certificate, extension, -1);
    X509_EXTENSION_free(extension);
}

void addExtensions(X509* certificate, X509* issuer, const CertificateRequest& request) {
    addExtension(certificate, issuer, NID_basic_constraints,
                 request.isAuthority ? "critical,CA:TRUE" : "critical,CA:FALSE");
    addExtension(
        certificate, issuer, NID_key_usage,
        request.isAuthority ? "critical,keyCertSign,cRLSign" : "critical,digitalSignature,keyEncipherment");
    addExtension(certificate, issuer, NID_subject_key_identifier, "hash");
    if (!request.isAuthority && !request.extendedKeyUsage.empty())
        addExtension(certificate, issuer, NID_ext_key_usage, request.extendedKeyUsage);
    if (!request.alternativeNames.empty())
        addExtension(certificate, issuer, NID_subject_alt_name, request.alternativeNames);
}

Identity describe(X509* certificate, EVP_PKEY* key) {
    Identity identity;
    const auto write = [](auto&& writer) {
        const BioPtr bio(BIO_new(BIO_s_mem()));
        require(writer(bio.get()) == 1, "writing PEM");
        return contentOf(bio.get());
    };
    identity.certificatePem = write([&](BIO* bio) { return PEM_write_bio_X509(bio, certificate); });
    identity.privateKeyPem = write(
        [&](BIO* bio) { return PEM_write_bio_PrivateKey(bio, key, nullptr, nullptr, 0, nullptr, nullptr); });
    identity.publicKeyPem = write([&](BIO* bio) { return PEM_write_bio_PUBKEY(bio, key); });
    identity.der = Data(write([&](BIO* bio) { return i2d_X509_bio(bio, certificate); }));
    return identity;
}

}  // namespace

Identity issue(const CertificateRequest& request, const Identity* issuer) {
    static std::atomic<long> serial{1};
    constexpr long secondsADay = 86'400;
    const CertificatePtr certificate(X509_new());
    const KeyPtr key = makeKey(request);
    require(key != nullptr, "making a key");

    X509_set_version(certificate.get(), X509_VERSION_3);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial++);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), request.firstDay * secondsADay);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), request.lastDay * secondsADay);
    X509_set_pubkey(certificate.get(), key.get());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_UTF8,
                               reinterpret_cast<const unsigned char*>(request.commonName.c_str()), -1, -1, 0);

    CertificatePtr issuerCertificate;
    KeyPtr issuerKey;
    if (issuer != nullptr) {
        issuerCertificate.reset(
            PEM_read_bio_X509(reading(issuer->certificatePem).get(), nullptr, nullptr, nullptr));
        issuerKey = privateKeyOf(*issuer);
    }
    X509* const signer = issuerCertificate ? issuerCertificate.get() : certificate.get();
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(signer));
    addExtensions(certificate.get(), signer, request);
    require(X509_sign(certificate.get(), issuerKey ? issuerKey.get() : key.get(),
                      EVP_get_digestbyname(request.digest.c_str())) > 0,
            "signing");
    return describe(certificate.get(), key.get());
}

std::string rsaDecrypted(const Identity& identity, std::string_view cipherText) {
    const KeyPtr key = privateKeyOf(identity);
    const KeyContextPtr context(EVP_PKEY_CTX_new(key.get(), nullptr));
    std::string plain(static_cast<std::size_t>(EVP_PKEY_get_size(key.get())), '\0');
    std::size_t size = plain.size();
    require(EVP_PKEY_decrypt_init(context.get()) == 1 &&
                EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) == 1 &&
                EVP_PKEY_decrypt(context.get(), reinterpret_cast<unsigned char*>(plain.data()), &size,
                                 reinterpret_cast<const unsigned char*>(cipherText.data()),
                                 cipherText.size()) == 1,
            "decrypting");
    plain.resize(size);
    return plain;
}

}  // namespace torvel::testing
