#include "sandbox/Encoding.h"
#include "sandbox/Sandbox.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include <fcntl.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>
#include <unistd.h>

namespace torvel::sandbox {

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using Bio = std::unique_ptr<BIO, decltype(&BIO_free)>;

constexpr long day = 24 * 60 * 60;

struct Extension {
    int nid;
    const char* value;
};

constexpr Extension authorityExtensions[] = {
    {NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
    {NID_key_usage, "critical,keyCertSign,cRLSign"},
    {NID_subject_key_identifier, "hash"},
    {NID_authority_key_identifier, "keyid:always"},
};
constexpr Extension serverExtensions[] = {
    {NID_basic_constraints, "critical,CA:FALSE"},
    {NID_key_usage, "critical,digitalSignature,keyEncipherment"},
    {NID_ext_key_usage, "serverAuth"},
    {NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1,IP:::1"},
    {NID_subject_key_identifier, "hash"},
    {NID_authority_key_identifier, "keyid:always"},
};

// The inputs are our own constants: a failure here is a broken installation of OpenSSL.
template <class T>
T must(T value) {
    if (!value) std::abort();
    return value;
}

void setSerial(X509* certificate) {
    const std::string bytes = randomBytes(16);
    BIGNUM* number = BN_bin2bn(reinterpret_cast<const unsigned char*>(bytes.data()), 16, nullptr);
    BN_rshift1(number, number);  // positive within 16 octets (RFC 5280, 4.1.2.2)
    BN_to_ASN1_INTEGER(number, X509_get_serialNumber(certificate));
    BN_free(number);
}

void setSubject(X509* certificate, const std::string& commonName) {
    const auto* text = reinterpret_cast<const unsigned char*>(commonName.data());
    X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate), "CN", MBSTRING_UTF8, text,
                               static_cast<int>(commonName.size()), -1, 0);
}

// With no issuer the certificate is signed by its own key.
template <std::size_t count>
Certificate makeCertificate(const std::string& commonName, EVP_PKEY* key, X509* issuer, EVP_PKEY* issuerKey,
                            const Extension (&extensions)[count]) {
    Certificate certificate(must(X509_new()), X509_free);
    X509* const issuing = issuer ? issuer : certificate.get();
    X509_set_version(certificate.get(), X509_VERSION_3);
    setSerial(certificate.get());
    setSubject(certificate.get(), commonName);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(issuing));
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 89 * day);
    X509_set_pubkey(certificate.get(), key);
    X509V3_CTX context;
    X509V3_set_ctx(&context, issuing, certificate.get(), nullptr, nullptr, 0);
    for (const Extension& extension : extensions) {
        X509_EXTENSION* made = must(X509V3_EXT_conf_nid(nullptr, &context, extension.nid, extension.value));
        X509_add_ext(certificate.get(), made, -1);
        X509_EXTENSION_free(made);
    }
    must(X509_sign(certificate.get(), issuerKey, EVP_sha256()));
    return certificate;
}

std::string text(BIO* bio) {
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(bio, &bytes);
    return {bytes, static_cast<std::size_t>(size)};
}

std::string pem(X509* certificate) {
    const Bio bio(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_X509(bio.get(), certificate);
    return text(bio.get());
}

std::string der(X509* certificate) {
    const Bio bio(BIO_new(BIO_s_mem()), BIO_free);
    i2d_X509_bio(bio.get(), certificate);
    return text(bio.get());
}

std::string pem(EVP_PKEY* key) {
    const Bio bio(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_PrivateKey(bio.get(), key, nullptr, nullptr, 0, nullptr, nullptr);
    return text(bio.get());
}

// The mode is set before a byte is written, and on a file that was there already too.
std::optional<std::string> writeFile(const std::filesystem::path& path, const std::string& bytes,
                                     mode_t mode) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
    const bool written = file >= 0 && ::fchmod(file, mode) == 0 &&
                         ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
    const int error = errno;
    if (file >= 0) ::close(file);
    if (written) return std::nullopt;
    return "cannot write " + path.string() + ": " + std::strerror(error);
}

}  // namespace

SandboxIdentity SandboxIdentity::make(Kind kind) {
    const Key serverKey(must(EVP_PKEY_Q_keygen(nullptr, nullptr, "RSA", std::size_t{2048})), EVP_PKEY_free);
    if (kind == Kind::selfSigned) {
        const Certificate server =
            makeCertificate("localhost", serverKey.get(), nullptr, serverKey.get(), serverExtensions);
        return {pem(server.get()), pem(server.get()), pem(serverKey.get()), der(server.get())};
    }
    const Key authorityKey(must(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256")), EVP_PKEY_free);
    // A name of its own: two authorities with one name would confuse whoever trusts both.
    const Certificate authority =
        makeCertificate("Sandbox authority " + hex(randomBytes(4)), authorityKey.get(), nullptr,
                        authorityKey.get(), authorityExtensions);
    const Certificate server =
        makeCertificate("localhost", serverKey.get(), authority.get(), authorityKey.get(), serverExtensions);
    return {pem(authority.get()), pem(server.get()), pem(serverKey.get()), der(server.get())};
}

std::optional<std::string> SandboxIdentity::write(const std::filesystem::path& folder) const {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return "cannot make " + folder.string() + ": " + error.message();
    if (auto fault = writeFile(folder / "ca.pem", caPem, 0644)) return fault;
    if (auto fault = writeFile(folder / "server.pem", serverPem, 0644)) return fault;
    if (auto fault = writeFile(folder / "server.der", serverDer, 0644)) return fault;
    return writeFile(folder / "server.key", serverKeyPem, 0600);
}

}  // namespace torvel::sandbox
