#include "TorvelPlatform/uikit/Tint.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace torvel {
namespace {

using Pixel = std::uint32_t;
using RGB = std::array<double, 3>;

constexpr std::uint32_t alphaOf(Pixel pixel) { return pixel >> 24; }
constexpr std::uint32_t channel(Pixel pixel, int shift) { return (pixel >> shift) & 0xFF; }

UIColor::Components clamped(const UIColor::Components& color) {
    const auto unit = [](double value) { return std::clamp(value, 0.0, 1.0); };
    return {unit(color.red), unit(color.green), unit(color.blue), unit(color.alpha)};
}

// The luminosity of a pixel over black, in steps of 1/25500.
constexpr std::uint32_t mostLuminous = 25500;
constexpr std::uint32_t luminosity(Pixel pixel) {
    const std::uint32_t own = 30 * channel(pixel, 16) + 59 * channel(pixel, 8) + 11 * channel(pixel, 0);
    return (own * alphaOf(pixel) + 127) / 255;
}

// SetLum and ClipColor of the blend mode: the colour moved to a luminosity, and back into range towards grey.
RGB withLuminosity(const RGB& color, double wanted) {
    const double change = wanted - (0.30 * color[0] + 0.59 * color[1] + 0.11 * color[2]);
    RGB result{color[0] + change, color[1] + change, color[2] + change};
    const auto [least, most] = std::minmax({result[0], result[1], result[2]});
    const double shrink = least < 0  ? wanted / (wanted - least)
                          : most > 1 ? (1 - wanted) / (most - wanted)
                                     : 1;
    for (double& value : result) value = std::clamp(wanted + (value - wanted) * shrink, 0.0, 1.0);
    return result;
}

// What the blend of a colour makes of a pixel depends on the pixel's luminosity alone, but for what a colour
// that is not opaque lets through. Both as fixed-point numbers: 255 is `one`.
class ColorBlend {
  public:
    explicit ColorBlend(const UIColor::Components& color)
        : m_color{color.red, color.green, color.blue},
          m_share(color.alpha),
          m_through(static_cast<std::uint32_t>(std::lround((1 - color.alpha) * one / 255))) {}

    struct Entry {
        std::uint16_t red, green, blue, unused;
    };
    Entry at(std::uint32_t luminosity) const {
        const RGB blended = withLuminosity(m_color, luminosity / double(mostLuminous));
        const auto fixed = [this](double value) {
            return static_cast<std::uint16_t>(std::lround(value * m_share * one));
        };
        return {fixed(blended[0]), fixed(blended[1]), fixed(blended[2]), 0};
    }
    // The pixel with its blend, under its own alpha.
    Pixel mix(Pixel pixel, const Entry& blend) const {
        return (pixel & 0xFF000000) | mix(pixel, 16, blend.red) | mix(pixel, 8, blend.green) |
               mix(pixel, 0, blend.blue);
    }

  private:
    static constexpr std::uint32_t one = 255 * 256;

    Pixel mix(Pixel pixel, int shift, std::uint32_t blend) const {
        const std::uint32_t backdrop = (channel(pixel, shift) * alphaOf(pixel) + 127) / 255;
        return (std::min(blend + backdrop * m_through + 128, one + 128) >> 8) << shift;
    }

    RGB m_color;
    double m_share;
    std::uint32_t m_through;
};

}  // namespace

Bitmap tinted(const Bitmap& bitmap, const UIColor::Components& color) {
    const ColorBlend blend(clamped(color));
    Bitmap result{bitmap.width, bitmap.height, std::vector<Pixel>(bitmap.pixels.size())};
    const auto fill = [&](auto entryOf) {
        std::transform(bitmap.pixels.begin(), bitmap.pixels.end(), result.pixels.begin(),
                       [&](Pixel pixel) { return blend.mix(pixel, entryOf(luminosity(pixel))); });
    };
    if (bitmap.pixels.size() < mostLuminous) {  // a table would cost more than it saves
        fill([&](std::uint32_t luminosity) { return blend.at(luminosity); });
    } else {
        std::vector<ColorBlend::Entry> table(mostLuminous + 1);
        for (std::uint32_t i = 0; i <= mostLuminous; ++i) table[i] = blend.at(i);
        fill([&](std::uint32_t luminosity) { return table[luminosity]; });
    }
    return result;
}

Bitmap silhouette(const Bitmap& bitmap, const UIColor::Components& color) {
    const auto [red, green, blue, alpha] = clamped(color);
    const auto byte = [](double value) { return static_cast<Pixel>(std::lround(value * 255)); };
    const Pixel flat = byte(red) << 16 | byte(green) << 8 | byte(blue);
    const auto share = static_cast<std::uint32_t>(std::lround(alpha * 65536));
    Bitmap result{bitmap.width, bitmap.height, std::vector<Pixel>(bitmap.pixels.size())};
    std::transform(bitmap.pixels.begin(), bitmap.pixels.end(), result.pixels.begin(),
                   [=](Pixel pixel) { return ((alphaOf(pixel) * share + 32768) >> 16) << 24 | flat; });
    return result;
}

}  // namespace torvel
