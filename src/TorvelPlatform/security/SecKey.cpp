#include "TorvelPlatform/security/SecKey.h"

#include "TorvelPlatform/security/Native.h"

namespace torvel {
namespace {

constexpr SecStatus parameterError{-50};
constexpr SecStatus internalError{-2070};

// A context that is ready to encrypt, from which each encryption starts as a copy: setting one up costs a
// tenth of the encryption itself. nullptr for keys that cannot encrypt.
KeyContextPtr makeEncryptor(EVP_PKEY* key) {
    KeyContextPtr context(EVP_PKEY_CTX_new(key, nullptr));
    if (!EVP_PKEY_is_a(key, "RSA") || !context || EVP_PKEY_encrypt_init(context.get()) != 1 ||
        EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PADDING) != 1)
        return nullptr;
    return context;
}

KeyPtr decodePublicKey(const Data& bytes) {
    const unsigned char* cursor = bytes.bytes().data();
    const unsigned char* const end = cursor + bytes.size();
    KeyPtr key(d2i_PUBKEY(nullptr, &cursor, static_cast<long>(bytes.size())));
    if (key) return cursor == end ? std::move(key) : nullptr;
    const BioPtr text(BIO_new_mem_buf(bytes.raw().data(), static_cast<int>(bytes.size())));
    return KeyPtr(PEM_read_bio_PUBKEY(text.get(), nullptr, nullptr, nullptr));
}

}  // namespace

struct SecKey::Native {
    KeyPtr key;
    KeyContextPtr encryptor;
    Data subjectPublicKeyInfo;
};

std::optional<SecKey> SecKey::createWithData(const Data& bytes) {
    loadOpenSSL();
    KeyPtr key = decodePublicKey(bytes);
    if (!key) return std::nullopt;
    return wrapKey(std::move(key));
}

std::optional<SecKey> wrapKey(KeyPtr key) {
    unsigned char* encoded = nullptr;
    const int size = i2d_PUBKEY(key.get(), &encoded);
    if (size <= 0) return std::nullopt;
    Data info(std::span<const std::uint8_t>(encoded, static_cast<std::size_t>(size)));
    OPENSSL_free(encoded);
    KeyContextPtr encryptor = makeEncryptor(key.get());
    return SecKey(std::make_shared<SecKey::Native>(std::move(key), std::move(encryptor), std::move(info)));
}

std::size_t SecKey::blockSize() const {
    return m_native->encryptor ? static_cast<std::size_t>(EVP_PKEY_get_size(m_native->key.get())) : 0;
}

Outcome<Data, SecStatus> SecKey::encrypt(SecPadding padding, std::span<const std::uint8_t> plainText) const {
    if (padding != SecPadding::PKCS1 || !m_native->encryptor) return parameterError;
    const KeyContextPtr context(EVP_PKEY_CTX_dup(m_native->encryptor.get()));
    std::string block(blockSize(), '\0');
    std::size_t size = block.size();
    if (!context) return internalError;
    if (EVP_PKEY_encrypt(context.get(), reinterpret_cast<unsigned char*>(block.data()), &size,
                         plainText.data(), plainText.size()) != 1)
        return parameterError;
    return Data(std::move(block));
}

const Data& SecKey::subjectPublicKeyInfo() const { return m_native->subjectPublicKeyInfo; }

std::string SecKey::pem() const {
    const BioPtr text(BIO_new(BIO_s_mem()));
    PEM_write_bio_PUBKEY(text.get(), m_native->key.get());
    return textOf(text.get());
}

std::string SecKey::description() const {
    const EVP_PKEY* const key = m_native->key.get();
    return std::string(EVP_PKEY_get0_type_name(key)) + " " + std::to_string(EVP_PKEY_get_bits(key));
}

int SecKey::securityBits() const { return EVP_PKEY_get_security_bits(m_native->key.get()); }

}  // namespace torvel
