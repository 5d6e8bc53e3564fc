#pragma once  // internal

#include "TorvelLibrary/crypto/TextCipher.h"

#include <cstdint>
#include <string>

namespace torvel {

struct RandomText {
    // As AES256CBC::randomText.
    static std::string make(std::int64_t length, bool justLowerCase, bool whitespace);

    // The same for 16 characters of letters and digits, without making a std::string.
    static IVText makeIV();
};

}  // namespace torvel
