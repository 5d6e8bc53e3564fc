#include "TorvelPlatform/uikit/ColorSet.h"

#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/JSON.h"
#include "TorvelPlatform/foundation/Text.h"
#include "TorvelPlatform/uikit/AssetCatalog.h"

#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <string>
#include <unordered_map>

namespace torvel {
namespace {

using RGB = std::array<double, 3>;

std::optional<double> hexByte(std::string_view digits) {
    unsigned value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
    const bool isWhole = !digits.empty() && error == std::errc() && end == digits.data() + digits.size();
    return isWhole ? std::optional(value / 255.0) : std::nullopt;
}

// A component in any notation, as a fraction. A whole number counts 255ths; a whole alpha is said as 0 or 1,
// and so is a number that is no text.
std::optional<double> component(const JSON& components, std::string_view name) {
    const auto member = components.member(name);
    if (!member) return std::nullopt;
    const auto text = member->string();
    if (text && (text->starts_with("0x") || text->starts_with("0X"))) return hexByte(text->substr(2));
    const auto value = text ? decimalNumber(*text) : member->number();
    if (!value) return std::nullopt;
    const bool isFraction = text && text->find('.') != text->npos;
    const bool isUnit = *value <= 1 && (!text || name == "alpha");
    const bool isByte = !isFraction && !isUnit && *value == std::floor(*value);
    return isByte ? *value / 255 : *value;
}

// The transfer functions of sRGB (IEC 61966-2-1), carried on below 0, where its extended form goes.
double encoded(double linear) {
    const double size = std::abs(linear);
    return std::copysign(size <= 0.0031308 ? size * 12.92 : 1.055 * std::pow(size, 1 / 2.4) - 0.055, linear);
}
double decoded(double color) {
    const double size = std::abs(color);
    return std::copysign(size <= 0.04045 ? size / 12.92 : std::pow((size + 0.055) / 1.055, 2.4), color);
}
RGB encoded(const RGB& linear) { return {encoded(linear[0]), encoded(linear[1]), encoded(linear[2])}; }

// Display P3 has the white point and the transfer function of sRGB, and other primaries.
RGB fromDisplayP3(const RGB& color) {
    const double r = decoded(color[0]), g = decoded(color[1]), b = decoded(color[2]);
    return encoded({1.2249401762805598 * r - 0.2249401762805600 * g,
                    -0.0420569547096882 * r + 1.0420569547096880 * g,
                    -0.0196375545903344 * r - 0.0786360455506319 * g + 1.0982736001409663 * b});
}

std::optional<RGB> inSRGB(const RGB& color, std::string_view space) {
    if (space == "srgb" || space == "extended-srgb") return color;
    if (space == "display-p3") return fromDisplayP3(color);
    if (space == "extended-linear-srgb") return encoded(color);
    return std::nullopt;
}

std::optional<RGB> readRGB(const JSON& components, std::string_view space) {
    if (space == "gray-gamma-22" || space == "extended-gray") {
        const auto white = component(components, "white");
        return white ? std::optional(RGB{*white, *white, *white}) : std::nullopt;
    }
    const auto red = component(components, "red");
    const auto green = component(components, "green");
    const auto blue = component(components, "blue");
    return red && green && blue ? inSRGB({*red, *green, *blue}, space) : std::nullopt;
}

std::optional<UIColor> readColor(const JSON& color) {
    const auto components = color.member("components");
    const auto space = color.member("color-space");
    if (!components || !space) return std::nullopt;
    const auto rgb = readRGB(*components, space->string().value_or(""));
    const auto alpha = component(*components, "alpha");
    if (!rgb || !alpha) return std::nullopt;
    for (const double value : *rgb)
        if (!std::isfinite(value)) return std::nullopt;  // converted beyond all bounds
    return UIColor((*rgb)[0], (*rgb)[1], (*rgb)[2], *alpha);
}

// --- Named colours that were read already ---

struct NamedColorView {
    std::string_view name, bundle;
    ScreenEnvironment::Style style;
    bool operator==(const NamedColorView&) const = default;
};

struct NamedColor {
    explicit NamedColor(const NamedColorView& view)
        : name(view.name), bundle(view.bundle), style(view.style) {}
    operator NamedColorView() const { return {name, bundle, style}; }
    bool operator==(const NamedColor&) const = default;

    std::string name, bundle;
    ScreenEnvironment::Style style;
};

// Of the name alone: a process asks few bundles.
struct NamedColorHash {
    using is_transparent = void;
    std::size_t operator()(const NamedColorView& color) const {
        return std::hash<std::string_view>()(color.name);
    }
};

std::optional<UIColor> readNamed(std::string_view name, const Bundle& bundle,
                                 ScreenEnvironment::Style style) {
    const auto folder = assetFolder(bundle, name, "colorset");
    if (!folder) return std::nullopt;
    const auto contents = readFile(*folder / "Contents.json");
    const auto color = contents ? colorOfSet(contents.value().raw(), style) : std::nullopt;
    if (!color) reportDiagnostic("The colour set \"" + folder->string() + "\" gives no colour.");
    return color;
}

}  // namespace

std::optional<UIColor> colorOfSet(std::string_view contents, ScreenEnvironment::Style style) {
    const auto root = JSON::parse(contents);
    const auto colors = root ? root.value().member("colors") : std::nullopt;
    if (!colors) return std::nullopt;
    std::optional<JSON> best;
    int bestFitness = 0;
    for (const JSON& entry : colors->elements()) {
        const int fit = appearanceFitness(entry, style);
        if (fit <= bestFitness) continue;
        bestFitness = fit;
        best = entry.member("color");
    }
    return best ? readColor(*best) : std::nullopt;
}

std::optional<UIColor> UIColor::named(std::string_view name, const Bundle& bundle) {
    // A thread's own, for screens ask for colours all the time and a lock would cost as much as the look-up.
    thread_local std::unordered_map<NamedColor, UIColor, NamedColorHash, std::equal_to<>> kept;
    const NamedColorView wanted{name, bundle.directory().native(), ScreenEnvironment::style};
    if (const auto found = kept.find(wanted); found != kept.end()) return found->second;
    auto color = readNamed(name, bundle, wanted.style);
    if (color) kept.emplace(NamedColor(wanted), *color);
    return color;
}

UIColor UIColor::initColor(std::string_view colorName, const Bundle& targetBundle) {
    if (const auto color = named(colorName, Bundle::main())) return *color;
    return named(colorName, targetBundle).value_or(darkGray());
}

}  // namespace torvel
