#include "Fuzz.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelLibrary/crypto/TextCipher.h"
#include "TorvelPlatform/foundation/Data.h"
#include "unit/TorvelLibrary/crypto/Reference.h"

#include <iostream>

using namespace torvel;

// The bytes are a plain text, the cipher bytes of one, and a whole cipher text; their number chooses the key.
void fuzz(std::string_view bytes) {
    std::cout.setstate(std::ios::failbit);  // the console lines of refused texts
    constexpr std::string_view keys = "0123456789abcdefghijklmnopqrstuv";
    const std::string_view key = keys.substr(0, 16 + bytes.size() / 16 % 3 * 8), ivText = "fedcba9876543210";
    const std::string_view blocks = bytes.substr(0, bytes.size() / 16 * 16);
    const std::string ivBase64 = reference::base64(ivText), text = ivBase64 + reference::base64(blocks);
    const std::string sealed =
        std::string(ivText) + reference::base64(reference::encrypt(key, ivText, bytes));
    std::string opened = reference::openedLeniently(key, ivText, blocks);
    const auto expected = isValidUTF8(opened) ? std::optional(opened) : std::nullopt;
    IVText iv;
    ivText.copy(iv.data(), iv.size());
    for (auto tier = supportedCipherKernels(); *tier != nullptr; ++tier) {
        mustHold(encryptText(bytes, key, iv, **tier) == sealed);
        if (!blocks.empty()) mustHold(decryptInSteps(text, ivBase64, key, **tier) == expected);
        const bool inOnePass = (*tier)->decryptFromBase64 != nullptr;
        mustHold(decryptAtOnce(text, key, **tier) ==
                 (inOnePass && !blocks.empty() ? expected : std::nullopt));
        if (const auto plain = decryptAtOnce(bytes, key, **tier))
            mustHold(plain == decryptInSteps(bytes, bytes.substr(0, 24), key, portableCipherKernels));
    }
    AES256CBC::decryptString(bytes, keys.substr(0, 16));
}
