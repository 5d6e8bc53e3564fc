#include "TorvelLibrary/crypto/TextCipher.h"

#include "TorvelLibrary/crypto/AESCipher.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/Text.h"

#include <string.h>

namespace torvel {
namespace {

const std::uint8_t* bytePointer(const char* bytes) { return reinterpret_cast<const std::uint8_t*>(bytes); }
std::uint8_t* bytePointer(char* bytes) { return reinterpret_cast<std::uint8_t*>(bytes); }

// Makes `text` what write(start) puts there, as long as it says and at most `size`. Spares writing the
// characters twice where the standard library can.
template <class Write>
void overwrite(std::string& text, std::size_t size, Write write) {
#ifdef __cpp_lib_string_resize_and_overwrite
    text.resize_and_overwrite(size, [&](char* start, std::size_t) { return write(start); });
#else
    text.resize(size);
    text.resize(write(text.data()));
#endif
}

bool isKey(std::string_view key) { return key.size() == 16 || key.size() == 24 || key.size() == 32; }
AESKey asKey(std::string_view key) {
    return {bytePointer(key.data()), static_cast<unsigned>(key.size() / 4)};
}

// How many whole blocks a base64 text of this length and padding stands for; 0 when they are not whole.
std::size_t blocksInBase64(std::string_view text) {
    if (text.empty() || text.size() % 4 != 0) return 0;
    const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
    const std::size_t bytes = text.size() / 4 * 3 - padding;
    return bytes % aesBlockSize == 0 ? bytes / aesBlockSize : 0;
}

std::optional<std::string> encryptInSteps(std::string_view plain, std::string_view key, std::string_view iv,
                                          const CipherKernels& kernels) {
    const auto cipher = AESCipher(key, iv, kernels).encrypt(plain);
    if (!cipher) return std::nullopt;
    return std::string(iv) + Base64::encode(cipher.value().bytes());
}

}  // namespace

std::optional<std::string> encryptText(std::string_view plain, std::string_view key, const IVText& iv,
                                       const CipherKernels& kernels) {
    if (kernels.encryptToBase64 == nullptr || !isKey(key))
        return encryptInSteps(plain, key, {iv.data(), iv.size()}, kernels);
    const std::size_t cipherSize = (plain.size() / aesBlockSize + 1) * aesBlockSize;
    const std::size_t size = iv.size() + (cipherSize + 2) / 3 * 4;
    std::optional<std::string> text(std::in_place);
    overwrite(*text, size + CipherKernels::slack, [&](char* out) {
        memcpy(out, iv.data(), iv.size());
        kernels.encryptToBase64(asKey(key), bytePointer(iv.data()), bytePointer(plain.data()), plain.size(),
                                out + iv.size());
        return size;
    });
    return text;
}

// An IV text that ends in "==" can occur again in well-formed base64 at the very end alone, so that no search
// is needed. (One that ends in a single "=" might also stand right before the last "=" of the text.)
std::optional<std::string> decryptAtOnce(std::string_view text, std::string_view key,
                                         const CipherKernels& kernels) {
    constexpr std::size_t ivLength = 24;
    if (kernels.decryptFromBase64 == nullptr || !isKey(key) || text.size() <= ivLength) return std::nullopt;
    const std::string_view iv = text.substr(0, ivLength);
    if (!iv.ends_with("==")) return std::nullopt;
    text.remove_prefix(ivLength);
    while (text.ends_with(iv)) text.remove_suffix(ivLength);
    const std::size_t blocks = blocksInBase64(text), size = blocks * aesBlockSize;
    if (blocks == 0) return std::nullopt;

    // Whether all of it is base64 shows on the way.
    std::optional<std::string> plain(std::in_place);
    DecryptedText found = DecryptedText::notBase64;
    overwrite(*plain, size + CipherKernels::slack, [&](char* out) {
        found = kernels.decryptFromBase64(asKey(key), iv.data(), text.data(), bytePointer(out), blocks);
        return PKCS7::remove({out, size}).size();
    });
    if (found == DecryptedText::notBase64 || (found == DecryptedText::otherBytes && !isValidUTF8(*plain))) {
        explicit_bzero(plain->data(), plain->size());
        plain.reset();
    }
    return plain;
}

std::optional<std::string> decryptInSteps(std::string_view text, std::string_view ivText,
                                          std::string_view key, const CipherKernels& kernels) {
    const auto iv = Base64::decode(ivText), cipher = Base64::decode(removingOccurrences(text, ivText));
    if (!cipher) fatalError("AES: the cipher text is not base64");
    const auto ivBytes = iv ? std::optional<std::string_view>(iv->raw()) : std::nullopt;
    const auto plain = AESCipher(key, ivBytes, kernels).decrypt(cipher->raw());
    return plain ? plain.value().utf8Text() : std::nullopt;
}

}  // namespace torvel
