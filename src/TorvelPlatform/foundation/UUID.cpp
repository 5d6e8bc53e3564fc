#include "TorvelPlatform/foundation/UUID.h"

#include "TorvelPlatform/foundation/FatalError.h"

#include <cstdint>

#include <unistd.h>

namespace torvel {

std::string randomUUIDString() {
    std::uint8_t bytes[16];
    if (::getentropy(bytes, sizeof bytes) != 0) fatalError("UUID: the system gives no entropy");
    bytes[6] = static_cast<std::uint8_t>(0x40 | (bytes[6] & 0x0F));  // version
    bytes[8] = static_cast<std::uint8_t>(0x80 | (bytes[8] & 0x3F));  // variant

    std::string text;
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += "0123456789ABCDEF"[bytes[i] >> 4];
        text += "0123456789ABCDEF"[bytes[i] & 0x0F];
    }
    return text;
}

}  // namespace torvel
