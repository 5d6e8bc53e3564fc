#include "TorvelLibrary/crypto/AESCipher.h"

#include "TorvelPlatform/foundation/FatalError.h"

#include <array>

#include <string.h>

namespace torvel {
namespace {

const std::uint8_t* bytePointer(std::string_view bytes) {
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}
std::uint8_t* bytePointer(char* bytes) { return reinterpret_cast<std::uint8_t*>(bytes); }

}  // namespace

std::string_view PKCS7::remove(std::string_view bytes) {
    if (bytes.empty()) fatalError("PKCS7: there are no bytes to remove padding from");
    const std::size_t padding = static_cast<std::uint8_t>(bytes.back());
    return padding <= bytes.size() ? bytes.substr(0, bytes.size() - padding) : bytes;
}

AESCipher::~AESCipher() {
    if (m_expanded) explicit_bzero(&m_schedule, sizeof m_schedule);
}

const AESKeySchedule& AESCipher::schedule() {
    if (m_expanded) return m_schedule;
    if (m_key.size() != 16 && m_key.size() != 24 && m_key.size() != 32)
        fatalError("AES: a key has 16, 24 or 32 bytes, not " + std::to_string(m_key.size()));
    m_kernels.expandKey({bytePointer(m_key), static_cast<unsigned>(m_key.size() / 4)}, m_schedule);
    m_expanded = true;
    return m_schedule;
}

Outcome<Data, AESCipher::Failure> AESCipher::encrypt(std::string_view bytes) {
    if (!m_iv) return Failure(CBCBlockMode::BlockError::MissingInitializationVector);
    if (m_iv->size() < aesBlockSize) return Failure(Error::invalidInitializationVector);
    const std::size_t padding = aesBlockSize - bytes.size() % aesBlockSize;
    std::string padded(bytes.size() + padding, static_cast<char>(padding));
    bytes.copy(padded.data(), bytes.size());

    std::string cipher(padded.size(), '\0');
    m_kernels.cbcEncrypt(schedule(), bytePointer(*m_iv), bytePointer(padded), bytePointer(cipher.data()),
                         padded.size() / aesBlockSize);
    explicit_bzero(padded.data(), padded.size());
    return Data(std::move(cipher));
}

Outcome<Data, AESCipher::Failure> AESCipher::decrypt(std::string_view bytes) {
    if (bytes.size() % aesBlockSize != 0) return Failure(Error::blockSizeExceeded);
    if (bytes.empty()) fatalError("AES: there are no bytes to decrypt");
    if (!m_iv) return Failure(CBCBlockMode::BlockError::MissingInitializationVector);

    std::array<std::uint8_t, aesBlockSize> iv{};
    const std::size_t ivSize = m_iv->copy(reinterpret_cast<char*>(iv.data()), iv.size());
    std::string plain(bytes.size(), '\0');
    m_kernels.cbcDecrypt(schedule(), iv.data(), bytePointer(bytes), bytePointer(plain.data()),
                         bytes.size() / aesBlockSize);
    explicit_bzero(iv.data(), iv.size());
    plain.erase(ivSize, aesBlockSize - ivSize);  // a block XORed with fewer bytes has only so many
    plain.resize(PKCS7::remove(plain).size());
    return Data(std::move(plain));
}

}  // namespace torvel
