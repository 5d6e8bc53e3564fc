#include "TorvelPlatform/security/SecCertificate.h"

#include "TorvelPlatform/security/Native.h"

#include <ctime>

#include <arpa/inet.h>

namespace torvel {
namespace {

std::string bytesOf(const ASN1_STRING* text) {
    return {reinterpret_cast<const char*>(ASN1_STRING_get0_data(text)),
            static_cast<std::size_t>(ASN1_STRING_length(text))};
}

// Four or sixteen bytes in the usual notation, anything else empty.
std::string addressOf(const std::string& bytes) {
    char text[INET6_ADDRSTRLEN] = "";
    if (bytes.size() == 4) inet_ntop(AF_INET, bytes.data(), text, sizeof text);
    if (bytes.size() == 16) inet_ntop(AF_INET6, bytes.data(), text, sizeof text);
    return text;
}

}  // namespace

std::string textOf(BIO* memory) {
    char* start = nullptr;
    const long size = BIO_get_mem_data(memory, &start);
    return {start, static_cast<std::size_t>(size)};
}

std::vector<SecCertificate> SecCertificate::createWithPEM(const Data& text) {
    loadOpenSSL();
    const BioPtr source(BIO_new_mem_buf(text.raw().data(), static_cast<int>(text.size())));
    std::vector<SecCertificate> certificates;
    while (X509Ptr next{PEM_read_bio_X509(source.get(), nullptr, nullptr, nullptr)}) {
        if (auto certificate = wrapCertificate(std::move(next)))
            certificates.push_back(std::move(*certificate));
    }
    ERR_clear_error();  // how the reader says that there are no more
    return certificates;
}

std::optional<SecCertificate> SecCertificate::createWithData(const Data& der) {
    loadOpenSSL();
    const unsigned char* cursor = der.bytes().data();
    const unsigned char* const end = cursor + der.size();
    X509Ptr certificate(d2i_X509(nullptr, &cursor, static_cast<long>(der.size())));
    if (!certificate || cursor != end) return std::nullopt;
    return wrapCertificate(std::move(certificate));
}

std::optional<SecCertificate> wrapCertificate(X509Ptr certificate) {
    unsigned char* encoded = nullptr;
    const int size = i2d_X509(certificate.get(), &encoded);
    if (size <= 0) return std::nullopt;
    Data der(std::span<const std::uint8_t>(encoded, static_cast<std::size_t>(size)));
    OPENSSL_free(encoded);
    return SecCertificate(std::make_shared<SecCertificate::Native>(std::move(certificate), std::move(der)));
}

const Data& SecCertificate::data() const { return m_native->der; }

std::optional<SecKey> SecCertificate::copyKey() const {
    KeyPtr key(X509_get_pubkey(m_native->certificate.get()));
    if (!key) return std::nullopt;
    return wrapKey(std::move(key));
}

std::string SecCertificate::subjectSummary() const {
    const BioPtr text(BIO_new(BIO_s_mem()));
    X509_NAME_print_ex(text.get(), X509_get_subject_name(m_native->certificate.get()), 0,
                       XN_FLAG_ONELINE & ~ASN1_STRFLGS_ESC_MSB);
    return textOf(text.get());
}

std::vector<std::string> SecCertificate::subjectAlternativeNames() const {
    const GeneralNamesPtr all(static_cast<GENERAL_NAMES*>(
        X509_get_ext_d2i(m_native->certificate.get(), NID_subject_alt_name, nullptr, nullptr)));
    std::vector<std::string> names;
    for (int i = 0; i < sk_GENERAL_NAME_num(all.get()); ++i) {
        const GENERAL_NAME* const name = sk_GENERAL_NAME_value(all.get(), i);
        if (name->type == GEN_DNS) names.push_back(bytesOf(name->d.dNSName));
        if (name->type == GEN_IPADD) names.push_back(addressOf(bytesOf(name->d.iPAddress)));
    }
    return names;
}

std::optional<std::chrono::sys_seconds> SecCertificate::notAfter() const {
    std::tm date{};
    if (ASN1_TIME_to_tm(X509_get0_notAfter(m_native->certificate.get()), &date) != 1) return std::nullopt;
    return std::chrono::sys_seconds(std::chrono::seconds(timegm(&date)));
}

}  // namespace torvel
