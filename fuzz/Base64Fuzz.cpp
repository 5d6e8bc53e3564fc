#include "Fuzz.h"
#include "TorvelLibrary/crypto/CipherKernels.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "support/GuardedBuffer.h"
#include "unit/TorvelLibrary/crypto/Reference.h"

using namespace torvel;

// Each kernel gets the longest beginning that stands for whole blocks, at either end of the mapped memory.
void fuzz(std::string_view bytes) {
    mustHold(Base64::encode(Data(bytes).bytes()) == reference::base64(bytes));
    const auto expected = reference::fromBase64(bytes);
    mustHold(Base64::decode(bytes) == (expected ? std::optional(Data(*expected)) : std::nullopt));

    constexpr std::string_view key = "0123456789abcdef", iv = "fedcba9876543210";
    const std::size_t blocks = bytes.size() / 4 * 3 / 16;
    const std::string_view cut = bytes.substr(0, (16 * blocks + 2) / 3 * 4);
    const auto cipher = reference::fromBase64(cut);
    for (auto tier = supportedCipherKernels(); *tier != nullptr && blocks > 0; ++tier) {
        if ((*tier)->decryptFromBase64 == nullptr) continue;
        for (const auto guard : {GuardedBuffer::Guard::before, GuardedBuffer::Guard::behind}) {
            GuardedBuffer keyBytes(key, guard), ivText(reference::base64(iv), guard), text(cut, guard),
                plain(16 * blocks + CipherKernels::slack, guard);
            const DecryptedText found = (*tier)->decryptFromBase64({keyBytes.bytes(), 4}, ivText.text(),
                                                                   text.text(), plain.bytes(), blocks);
            mustHold((found != DecryptedText::notBase64) == (cipher && cipher->size() == 16 * blocks));
            if (found == DecryptedText::notBase64) continue;
            const std::string opened = reference::cbc(false, false, key, iv, *cipher);
            mustHold(opened == std::string_view(plain.text(), opened.size()));
            const auto isASCII = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
            mustHold((found == DecryptedText::ascii) == std::all_of(opened.begin(), opened.end(), isASCII));
        }
    }
}
