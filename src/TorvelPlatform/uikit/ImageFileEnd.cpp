#include "TorvelPlatform/uikit/ImageFileEnd.h"

namespace torvel {
namespace {

enum Marker : unsigned char { tem = 0x01, rst0 = 0xD0, soi = 0xD8, eoi = 0xD9, sos = 0xDA };

// Progressive files have about ten. Each costs a pass over the whole image, however short it is.
constexpr int mostScans = 100;

bool standsAlone(unsigned char marker) {
    return marker == 0 || marker == tem || (marker >= rst0 && marker <= soi);
}

// The size of the table of colours that a byte of flags announces.
std::size_t colorTableSize(unsigned char flags) { return flags & 0x80 ? std::size_t{6} << (flags & 7) : 0; }

}  // namespace

// Segments are jumped over, so that the end of a thumbnail inside one does not count. Coded data between them
// holds no marker but those that stand alone: it writes 0xFF as 0xFF 0x00.
bool reachesJPEGEnd(const Data& file) {
    const auto bytes = file.bytes();
    int scans = 0;
    for (std::size_t at = 0; at + 1 < bytes.size() && scans <= mostScans;) {
        if (bytes[at] != 0xFF || bytes[at + 1] == 0xFF) {
            ++at;
            continue;
        }
        const unsigned char marker = bytes[at + 1];
        if (marker == eoi) return true;
        at += 2;
        if (standsAlone(marker)) continue;
        if (marker == sos) ++scans;
        if (at + 1 >= bytes.size()) return false;
        at += static_cast<std::size_t>(bytes[at]) << 8 | bytes[at + 1];
    }
    return false;
}

bool reachesGIFImageEnd(const Data& file) {
    const auto bytes = file.bytes();
    const auto at = [&](std::size_t index) { return index < bytes.size() ? bytes[index] : std::uint8_t{0}; };
    std::size_t next = 13 + colorTableSize(at(10));
    while (next < bytes.size()) {
        const bool isImage = bytes[next] == ',';
        if (!isImage && bytes[next] != '!') return false;
        next += isImage ? 11 + colorTableSize(at(next + 9)) : 2;
        while (at(next) != 0) next += at(next) + std::size_t{1};  // the blocks of its data
        if (isImage) return next < bytes.size();
        ++next;
    }
    return false;
}

}  // namespace torvel
