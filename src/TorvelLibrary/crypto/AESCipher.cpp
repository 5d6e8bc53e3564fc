#include "TorvelLibrary/crypto/AESCipher.h"

#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/FatalError.h"

#include <algorithm>
#include <array>

#include <string.h>

namespace torvel {
namespace {

const std::uint8_t* bytePointer(std::string_view bytes) {
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}
std::uint8_t* bytePointer(char* bytes) { return reinterpret_cast<std::uint8_t*>(bytes); }

// Makes `text` longer by `added` characters that write(first) stores, and then as long as write says it
// filled (counted from the same place). Spares writing the characters twice where the standard library can.
template <class Write>
void appendWritten(std::string& text, std::size_t added, Write write) {
    const std::size_t before = text.size();
#ifdef __cpp_lib_string_resize_and_overwrite
    text.resize_and_overwrite(before + added,
                              [&](char* start, std::size_t) { return before + write(start + before); });
#else
    text.resize(before + added);
    text.resize(before + write(text.data() + before));
#endif
}

// How many whole blocks a base64 text of this length and padding stands for; absent when they are not whole.
std::optional<std::size_t> blocksInBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) return std::nullopt;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    const std::size_t bytes = text.size() / 4 * 3 - padding;
    if (bytes % aesBlockSize != 0) return std::nullopt;
    return bytes / aesBlockSize;
}

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
    m_kernels.expandKey(bytePointer(m_key), static_cast<unsigned>(m_key.size() / 4), m_schedule);
    m_expanded = true;
    return m_schedule;
}

Outcome<Data, AESCipher::Failure> AESCipher::encrypt(std::string_view bytes) {
    if (!m_iv) return Failure(CBCBlockMode::BlockError::MissingInitializationVector);
    if (m_iv->size() < aesBlockSize) return Failure(Error::invalidInitializationVector);
    const std::size_t padding = aesBlockSize - bytes.size() % aesBlockSize;
    std::string padded(bytes);
    padded.append(padding, static_cast<char>(padding));

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

Outcome<std::string, AESCipher::Failure> AESCipher::encryptToBase64(std::string head,
                                                                    std::string_view bytes) {
    if (m_kernels.cbcEncryptToBase64 == nullptr || !hasWholeIV()) {
        const auto cipher = encrypt(bytes);
        if (!cipher) return cipher.error();
        head += Base64::encode(cipher.value().bytes());
        return head;
    }
    const AESKeySchedule& keys = schedule();
    const std::size_t cipherSize = (bytes.size() / aesBlockSize + 1) * aesBlockSize;
    const std::size_t textSize = (cipherSize + 2) / 3 * 4;
    appendWritten(head, textSize, [&](char* out) {
        m_kernels.cbcEncryptToBase64(keys, bytePointer(*m_iv), bytePointer(bytes), bytes.size(), out);
        return textSize;
    });
    return head;
}

Outcome<std::string, AESCipher::Failure> AESCipher::decryptFromBase64(std::string_view text) {
    if (auto plain = decryptWellFormed(text)) return std::move(*plain);
    const auto cipher = Base64::decode(text);
    if (!cipher) fatalError("AES: the cipher text is not base64");
    auto plain = decrypt(cipher->raw());
    if (!plain) return plain.error();
    return std::move(plain).value().raw();
}

std::optional<std::string> AESCipher::decryptWellFormed(std::string_view text) {
    if (m_kernels.cbcDecryptFromBase64 == nullptr || !hasWholeIV()) return std::nullopt;
    const auto blocks = blocksInBase64(text);
    if (!blocks) return std::nullopt;
    const AESKeySchedule& keys = schedule();
    bool decoded = false;
    std::string plain;
    appendWritten(plain, *blocks * aesBlockSize, [&](char* out) -> std::size_t {
        const std::string_view bytes(out, *blocks * aesBlockSize);
        decoded =
            m_kernels.cbcDecryptFromBase64(keys, bytePointer(*m_iv), text.data(), bytePointer(out), *blocks);
        if (!decoded) explicit_bzero(out, bytes.size());
        return decoded ? PKCS7::remove(bytes).size() : 0;
    });
    if (!decoded) return std::nullopt;
    return plain;
}

}  // namespace torvel
