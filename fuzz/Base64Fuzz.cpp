#include "Fuzz.h"
#include "TorvelPlatform/foundation/Base64.h"

using namespace torvel;

void fuzz(std::string_view bytes) {
    const std::string encoded = Base64::encode(Data(bytes).bytes());
    mustHold(Base64::decode(encoded) == Data(bytes));
    const auto decoded = Base64::decode(bytes);
    // All but the spare bits of the last character come back.
    if (decoded) mustHold(Base64::encode(decoded->bytes()).size() == bytes.size());
}
