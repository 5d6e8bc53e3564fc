#include "TorvelPlatform/uikit/Tint.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

namespace torvel {
namespace {

// Every combination of eight steps in four channels, so often that the greater one is worth a table.
Bitmap grid(int times) {
    constexpr std::uint32_t steps[] = {0, 1, 64, 127, 128, 200, 254, 255};
    Bitmap bitmap{64 * times, 64, {}};
    for (unsigned i = 0; i < 4096u * static_cast<unsigned>(times); ++i)
        bitmap.pixels.push_back(steps[i & 7] << 24 | steps[i >> 3 & 7] << 16 | steps[i >> 6 & 7] << 8 |
                                steps[i >> 9 & 7]);
    return bitmap;
}

// The blend mode as W3C Compositing and Blending Level 1 writes it, in real numbers, for a pixel over black.
std::array<double, 3> formula(const std::array<double, 3>& backdrop, const UIColor::Components& color) {
    const auto lum = [](const std::array<double, 3>& c) { return 0.3 * c[0] + 0.59 * c[1] + 0.11 * c[2]; };
    std::array<double, 3> c{color.red, color.green, color.blue};
    const double shift = lum(backdrop) - lum(c);
    for (double& value : c) value += shift;
    const double l = lum(c), n = *std::min_element(c.begin(), c.end()),
                 x = *std::max_element(c.begin(), c.end());
    for (double& value : c) {
        if (n < 0) value = l + (value - l) * l / (l - n);
        if (x > 1) value = l + (value - l) * (1 - l) / (x - l);
    }
    for (std::size_t i = 0; i < 3; ++i) c[i] = (1 - color.alpha) * backdrop[i] + color.alpha * c[i];
    return c;
}

TEST(Tint, IsTheBlendModesFormulaWithinOneOf255) {
    const UIColor::Components colors[] = {{0, 0, 0, 1},   {1, 1, 1, 1},       {1, 0, 0, 1},
                                          {0, 0, 1, 0.5}, {0.2, 0.6, 0.4, 1}, {0.9, 0.1, 0.7, 0}};
    for (const int times : {1, 8})
        for (const auto& color : colors) {
            const Bitmap source = grid(times), result = tinted(source, color);
            double worst = 0;
            for (std::size_t i = 0; i < source.pixels.size(); ++i) {
                const std::uint32_t from = source.pixels[i], to = result.pixels[i];
                ASSERT_EQ(from >> 24, to >> 24);
                const double alpha = (from >> 24) / 255.0;
                const auto part = [&](int shift) { return (from >> shift & 0xFF) / 255.0 * alpha; };
                const auto wanted = formula({part(16), part(8), part(0)}, color);
                for (std::size_t c = 0; c < 3; ++c)
                    worst = std::max(worst, std::abs((to >> (16 - 8 * c) & 0xFF) - wanted[c] * 255));
            }
            EXPECT_LT(worst, 1.001) << times << " " << color.red << color.green << color.blue;
        }
}

}  // namespace
}  // namespace torvel
