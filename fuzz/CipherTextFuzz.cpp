#include "Fuzz.h"
#include "TorvelLibrary/crypto/AES256CBC.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/Data.h"

#include <iostream>

using namespace torvel;

void fuzz(std::string_view bytes) {
    std::cout.setstate(std::ios::failbit);  // the console lines of refused texts
    constexpr std::string_view key = "0123456789abcdef";
    if (const auto sealed = AES256CBC::encryptString(bytes, key); sealed && isValidUTF8(bytes)) {
        const std::string iv = Base64::encode(Data(std::string_view(*sealed).substr(0, 16)).bytes());
        mustHold(AES256CBC::decryptString(iv + sealed->substr(16), key) == bytes);
    }
    AES256CBC::decryptString(bytes, key);
}
