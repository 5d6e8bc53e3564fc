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

// What a message is in the common case: a whole IV, a valid key, whole blocks, base64 without faults. In such
// a text an IV text that ends in "==" can only occur again at the very end, so that no search is needed. (One
// that ends in a single "=" might also stand right before the last "=" of the text.)
struct WellFormed {
    std::string_view iv, data;
    std::size_t blocks = 0;

    WellFormed(std::string_view text, std::size_t ivLength)
        : iv(text.substr(0, ivLength)), data(text.substr(ivLength)) {
        if (iv.size() != 24 || !iv.ends_with("==")) return;
        while (data.ends_with(iv)) data.remove_suffix(iv.size());
        blocks = blocksInBase64(data);
    }
};

// In one pass, without looking first whether the text is base64: that shows on the way.
DecryptedText decryptAtOnce(const WellFormed& text, std::string_view key, const CipherKernels& kernels,
                            std::string& plain) {
    DecryptedText found = DecryptedText::notBase64;
    const std::size_t size = text.blocks * aesBlockSize;
    overwrite(plain, size + CipherKernels::slack, [&](char* out) -> std::size_t {
        found = kernels.decryptFromBase64(asKey(key), text.iv.data(), text.data.data(), bytePointer(out),
                                          text.blocks);
        if (found != DecryptedText::notBase64) return PKCS7::remove({out, size}).size();
        explicit_bzero(out, size);
        return 0;
    });
    return found;
}

// Step by step, for every text.
[[gnu::cold]] std::optional<std::string> decryptInSteps(std::string_view text, std::string_view prefix,
                                                        std::string_view key, const CipherKernels& kernels) {
    const auto iv = Base64::decode(prefix), cipher = Base64::decode(removingOccurrences(text, prefix));
    if (!cipher) fatalError("AES: the cipher text is not base64");
    const auto ivBytes = iv ? std::optional<std::string_view>(iv->raw()) : std::nullopt;
    const auto plain = AESCipher(key, ivBytes, kernels).decrypt(cipher->raw());
    return plain ? plain.value().utf8Text() : std::nullopt;
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

std::optional<std::string> decryptText(std::string_view text, std::size_t ivLength, std::string_view key,
                                       const CipherKernels& kernels) {
    std::optional<std::string> plain(std::in_place);
    const WellFormed wellFormed(text, ivLength);
    DecryptedText found = DecryptedText::notBase64;
    if (kernels.decryptFromBase64 != nullptr && wellFormed.blocks > 0 && isKey(key))
        found = decryptAtOnce(wellFormed, key, kernels, *plain);
    if (found == DecryptedText::notBase64)
        plain = decryptInSteps(text, text.substr(0, ivLength), key, kernels);
    else if (found == DecryptedText::otherBytes && !isValidUTF8(*plain))
        plain.reset();
    return plain;
}

}  // namespace torvel
