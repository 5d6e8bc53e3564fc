#include "Fuzz.h"
#include "TorvelPlatform/http/ContentDecoder.h"

using namespace torvel;

void fuzz(std::string_view bytes) {
    constexpr std::size_t limit = 1 << 20;
    for (const char* coding : {"gzip", "deflate", "br", "gzip, br"}) {
        ContentDecoder decoder(coding);
        std::string output;
        const std::size_t half = bytes.size() / 2;
        if (decoder.decode(bytes.substr(0, half), output, limit) == ContentDecoder::Status::ok)
            decoder.decode(bytes.substr(half), output, limit);
        mustHold(output.size() <= limit);
    }
}
