#include "TorvelPlatform/security/SecCertificate.h"

#include "TorvelPlatform/security/Native.h"

namespace torvel {

std::optional<SecCertificate> SecCertificate::createWithData(const Data& der) {
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
    char* start = nullptr;
    const long size = BIO_get_mem_data(text.get(), &start);
    return {start, static_cast<std::size_t>(size)};
}

}  // namespace torvel
