#include "TorvelPlatform/uikit/Tint.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace torvel {
namespace {

using Pixel = std::uint32_t;
using RGB = std::array<float, 3>;

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
RGB withLuminosity(const RGB& color, float wanted) {
    const float change = wanted - (0.30F * color[0] + 0.59F * color[1] + 0.11F * color[2]);
    RGB result{color[0] + change, color[1] + change, color[2] + change};
    const auto [least, most] = std::minmax({result[0], result[1], result[2]});
    const float shrink = least < 0  ? wanted / (wanted - least)
                         : most > 1 ? (1 - wanted) / (most - wanted)
                                    : 1;
    for (float& value : result) value = std::clamp(wanted + (value - wanted) * shrink, 0.0F, 1.0F);
    return result;
}

// What the blend of a colour makes of a pixel depends on the pixel's luminosity alone, but for what a colour
// that is not opaque lets through.
class ColorBlend {
  public:
    explicit ColorBlend(const UIColor::Components& color)
        : m_color{static_cast<float>(color.red), static_cast<float>(color.green),
                  static_cast<float>(color.blue)},
          m_share(static_cast<float>(255 * color.alpha)),
          m_through(static_cast<float>((1 - color.alpha) / 255)) {}

    // The blend at a luminosity, from 0 to 255, as far as the colour is opaque.
    using Entry = std::array<float, 3>;
    Entry at(std::uint32_t luminosity) const {
        const auto [red, green, blue] =
            withLuminosity(m_color, static_cast<float>(luminosity) / mostLuminous);
        return {red * m_share, green * m_share, blue * m_share};
    }
    // The pixel with its blend, under its own alpha.
    Pixel mix(Pixel pixel, const Entry& blend) const {
        return (pixel & 0xFF000000) | mix(pixel, 16, blend[0]) | mix(pixel, 8, blend[1]) |
               mix(pixel, 0, blend[2]);
    }

  private:
    Pixel mix(Pixel pixel, int shift, float blend) const {
        const auto backdrop = static_cast<float>(channel(pixel, shift) * alphaOf(pixel));
        return static_cast<Pixel>(blend + backdrop * m_through + 0.5F) << shift;
    }

    RGB m_color;
    float m_share, m_through;
};

// Every pixel mixed with the entry of its luminosity. A table costs about as much as the pixels that it has
// entries for.
template <class EntryOf, class Mix>
Bitmap mapped(const Bitmap& bitmap, EntryOf entryOf, Mix mix) {
    Bitmap result = bitmap;
    if (result.pixels.size() < mostLuminous) {
        for (Pixel& pixel : result.pixels) pixel = mix(pixel, entryOf(luminosity(pixel)));
        return result;
    }
    std::vector<decltype(entryOf(0))> table(mostLuminous + 1);
    for (std::uint32_t i = 0; i <= mostLuminous; ++i) table[i] = entryOf(i);
    for (Pixel& pixel : result.pixels) pixel = mix(pixel, table[luminosity(pixel)]);
    return result;
}

}  // namespace

Bitmap tinted(const Bitmap& bitmap, const UIColor::Components& color) {
    const ColorBlend blend(clamped(color));
    if (color.alpha < 1)
        return mapped(
            bitmap, [&](std::uint32_t luminosity) { return blend.at(luminosity); },
            [&](Pixel pixel, const ColorBlend::Entry& entry) { return blend.mix(pixel, entry); });
    return mapped(
        bitmap, [&](std::uint32_t luminosity) { return blend.mix(0, blend.at(luminosity)); },
        [](Pixel pixel, Pixel entry) { return (pixel & 0xFF000000) | entry; });
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
