#include "TorvelPlatform/uikit/qt/ImageFiles.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <png.h>
#include <turbojpeg.h>

namespace torvel {
namespace {

bool isOpaque(const Bitmap& bitmap) {
    return std::all_of(bitmap.pixels.begin(), bitmap.pixels.end(),
                       [](std::uint32_t pixel) { return pixel >> 24 == 0xFF; });
}

void append(png_structp png, png_bytep bytes, std::size_t size) {
    static_cast<std::string*>(png_get_io_ptr(png))->append(reinterpret_cast<const char*>(bytes), size);
}

// libpng says what went wrong and jumps here. Nothing in this function needs to be destroyed.
bool write(png_structp png, png_infop info, const Bitmap& bitmap, bool opaque) {
    if (setjmp(png_jmpbuf(png))) return false;
    const auto width = static_cast<png_uint_32>(bitmap.width),
               height = static_cast<png_uint_32>(bitmap.height);
    png_set_IHDR(png, info, width, height, 8, opaque ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_RGB_ALPHA,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    // A third of the time of the usual settings, at about their size.
    png_set_compression_level(png, 3);
    png_set_filter(png, PNG_FILTER_TYPE_BASE, PNG_FILTER_SUB | PNG_FILTER_UP);
    png_write_info(png, info);
    png_set_bgr(png);
    if (opaque) png_set_filler(png, 0, PNG_FILLER_AFTER);
    for (png_uint_32 y = 0; y < height; ++y)
        png_write_row(png, reinterpret_cast<png_const_bytep>(&bitmap.pixels[std::size_t{y} * width]));
    png_write_end(png, nullptr);
    return true;
}

struct PNGWriter {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png != nullptr ? png_create_info_struct(png) : nullptr;
    PNGWriter() = default;
    PNGWriter(const PNGWriter&) = delete;
    PNGWriter& operator=(const PNGWriter&) = delete;
    ~PNGWriter() { png_destroy_write_struct(&png, &info); }
};

// A JPEG has no transparency.
std::vector<std::uint32_t> overWhite(const Bitmap& bitmap) {
    std::vector<std::uint32_t> pixels(bitmap.pixels.size());
    std::transform(bitmap.pixels.begin(), bitmap.pixels.end(), pixels.begin(), [](std::uint32_t pixel) {
        const std::uint32_t alpha = pixel >> 24;
        const auto channel = [=](int shift) {
            return ((((pixel >> shift) & 0xFF) * alpha + 255 * (255 - alpha) + 127) / 255) << shift;
        };
        return channel(16) | channel(8) | channel(0);
    });
    return pixels;
}

using Compressor = std::unique_ptr<void, int (*)(tjhandle)>;

}  // namespace

std::optional<Data> encodePNG(const Bitmap& bitmap) {
    std::string bytes;
    PNGWriter writer;
    if (writer.info == nullptr) return std::nullopt;
    png_set_write_fn(writer.png, &bytes, append, [](png_structp) {});
    if (!write(writer.png, writer.info, bitmap, isOpaque(bitmap))) return std::nullopt;
    return Data(std::move(bytes));
}

std::optional<Data> encodeJPEG(const Bitmap& bitmap, double quality) {
    const Compressor compressor(tjInitCompress(), tjDestroy);
    const auto pixels = overWhite(bitmap);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    const int percent = static_cast<int>(std::lround(std::clamp(quality, 0.01, 1.0) * 100));
    const int failed =
        tjCompress2(compressor.get(), reinterpret_cast<const unsigned char*>(pixels.data()), bitmap.width, 0,
                    bitmap.height, TJPF_BGRX, &bytes, &size, TJSAMP_444, percent, TJFLAG_ACCURATEDCT);
    const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owner(bytes, tjFree);
    if (failed != 0) return std::nullopt;
    return Data(std::span<const std::uint8_t>(bytes, size));
}

}  // namespace torvel
