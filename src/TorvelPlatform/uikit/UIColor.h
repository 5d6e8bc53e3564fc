#pragma once

#include "TorvelPlatform/foundation/Bundle.h"

#include <memory>
#include <optional>
#include <string_view>

namespace torvel {

class UIImage;

// A colour: red, green, blue and alpha in sRGB, each exactly the double that was given, or a pattern, which
// has no components. A value; safe from any thread.
class UIColor {
  public:
    // Red, green, blue and alpha, from 0 to 1; colours outside sRGB go beyond.
    struct Components {
        double red;    // 0 to 1 within sRGB
        double green;  // 0 to 1 within sRGB
        double blue;   // 0 to 1 within sRGB
        double alpha;  // 0 is clear, 1 opaque
        // Exact, without a tolerance.
        bool operator==(const Components&) const = default;
    };

    // A colour by its components, opaque unless said otherwise.
    constexpr UIColor(double red, double green, double blue, double alpha = 1)
        : m_components{red, green, blue, alpha} {}
    // A colour that repeats an image.
    static UIColor patternImage(std::shared_ptr<const UIImage> image);
    // The platform's dark grey, a third of white.
    static UIColor darkGray() { return {1.0 / 3, 1.0 / 3, 1.0 / 3}; }

    // An opaque colour from six hexadecimal digits, white space around them and a "#" before them or not.
    //
    // The text is read as the platform's scanner reads a number, and the number's lower 24 bits are the
    // colour: "0x" may stand before the digits, the first other character ends them, what has none is black,
    // a number beyond 32 bits is white. So "FFF" is 0x000FFF and the first two of eight digits count for
    // nothing.
    static UIColor hexString(std::string_view text);

    // The named colour of a bundle: the set "<name>.colorset" of its asset catalogues, in the appearance
    // that ScreenEnvironment::style asks for. Read on the first call and kept. Absent when there is no such
    // set, or none that says a colour for any device or for phones; one that is no colour set is reported to
    // the diagnostics as well, at each call.
    static std::optional<UIColor> named(std::string_view name, const Bundle& bundle);
    // The named colour of the main bundle, else of the other one, else the dark grey.
    static UIColor initColor(std::string_view colorName, const Bundle& targetBundle);

    // The components; absent for a pattern.
    std::optional<Components> components() const;
    // The image of a pattern; nullptr for any other colour.
    const std::shared_ptr<const UIImage>& patternImage() const { return m_pattern; }

    // The colour with another alpha in the place of its own; a pattern stays as it is.
    UIColor withAlphaComponent(double alpha) const;
    // The colour with alpha 0.5.
    UIColor translucent() const { return withAlphaComponent(0.5); }
    // The colour with alpha 0.75.
    UIColor hazy() const { return withAlphaComponent(0.75); }
    // The colour with alpha 0.25.
    UIColor transparent() const { return withAlphaComponent(0.25); }

    // Whether both have components and all four are equal, exactly. A pattern equals nothing, not even
    // itself.
    bool operator==(const UIColor& other) const;

  private:
    Components m_components;
    std::shared_ptr<const UIImage> m_pattern;
    bool m_isPattern = false;
};

}  // namespace torvel
