// The colour theme: its keys, its values, and whether texts can be read on their backgrounds.
#include "TorvelLibrary/Constants.h"
#include "TorvelLibrary/Utils/ColorDAO.h"
#include "TorvelLibrary/preflight/Findings.h"
#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/uikit/UIColor.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace torvel::preflight {
namespace {

constexpr double readable = 4.5;  // WCAG 2.1, 1.4.3, level AA for text of any size

// What screens write on what.
struct Pair {
    std::string ColorDAO::*text;
    std::string ColorDAO::*background;
};
constexpr Pair pairs[] = {
    {&ColorDAO::onPrimaryColor, &ColorDAO::primaryColor},
    {&ColorDAO::regularTextColor, &ColorDAO::backgroundColor},
    {&ColorDAO::regularTextColor, &ColorDAO::surfaceColor},
    {&ColorDAO::regularTextColor, &ColorDAO::circleTextFieldBGColor},
    {&ColorDAO::secondaryTextColor, &ColorDAO::backgroundColor},
    {&ColorDAO::secondaryTextColor, &ColorDAO::surfaceColor},
    {&ColorDAO::circleSecondaryTextColor, &ColorDAO::circleSecondaryBackgroundColor},
};

std::string_view keyOf(std::string ColorDAO::*color) {
    return std::ranges::find(ColorDAO::fields(), color, &ColorDAO::Field::color)->key;
}

// WCAG 2.1, "relative luminance".
double luminance(std::string_view hex) {
    const auto linear = [](double c) {
        return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
    };
    const auto parts = UIColor::hexString(hex).components().value_or(UIColor::Components{});
    return 0.2126 * linear(parts.red) + 0.7152 * linear(parts.green) + 0.0722 * linear(parts.blue);
}

double contrast(std::string_view one, std::string_view other) {
    const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
    return (lighter + 0.05) / (darker + 0.05);
}

bool isSixDigits(std::string_view value) {
    std::string_view digits = CharacterSet::whitespacesAndNewlines().trimming(value);
    if (digits.starts_with('#')) digits.remove_prefix(1);
    return digits.size() == 6 && digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos;
}

// One theme file: the one that the library loads, or another that the host puts in its place at run time.
class Theme {
  public:
    Theme(const Host& host, Findings& findings) : m_host(host), m_findings(findings) {}

    void examine(const std::filesystem::path& path) {
        const auto theme = readList(m_host, path, refused, m_findings);
        if (!theme) return;
        const PropertyList::Dictionary* const values = theme->root.dictionary();
        if (values == nullptr)
            return m_findings.error(
                "root", {theme->file.name()},
                {"the root is not a dictionary", refused, "make it a dictionary of colours"});
        for (const auto& [key, value] : *values) member(theme->file.at(key), value);
        if (const auto colors = ColorDAO::from(theme->root)) contrasts(theme->file, colors.value());
    }

  private:
    static constexpr char refused[] = "the whole file is refused and the library's own theme stays";

    void member(const Place& place, const PropertyList& value) {
        const auto field = std::ranges::find(ColorDAO::fields(), place.key, &ColorDAO::Field::key);
        if (field == ColorDAO::fields().end()) return unknown(place);
        if (value.string() == nullptr)
            m_findings.error("not-a-text", place,
                             {"the colour is not a text", refused, "write it as a string of six digits"});
        else if (!isSixDigits(*value.string()))
            m_findings.error("not-six-digits", place,
                             {inQuotes(*value.string()) + " is not six hexadecimal digits",
                              "it is read as a number: short forms turn blue or black, eight digits lose the "
                              "first two",
                              "write red, green and blue in two digits each"});
    }

    // Deliberate: "Cirlce" is how two of the keys are spelt, and the correct spelling is not recognised.
    void unknown(const Place& place) {
        std::vector<std::string_view> known;
        for (const ColorDAO::Field& field : ColorDAO::fields()) known.push_back(field.key);
        const std::string_view meant = nearest(place.key, known);
        if (meant.empty())
            m_findings.warning("unknown-key", place,
                               {"themes have no such colour", "the value is never read", "remove it"});
        else
            m_findings.error(
                "misspelt-key", place,
                {"themes have no such colour", inQuotes(meant) + " takes its built-in default instead",
                 "spell the key " + inQuotes(meant) + ", exactly so"});
    }

    void contrasts(const KeyedFile& file, const ColorDAO& colors) {
        for (const auto& [text, background] : pairs) {
            const double ratio = contrast(colors.*text, colors.*background);
            if (ratio >= readable) continue;
            char shown[16];
            std::snprintf(shown, sizeof shown, "%.2f", ratio);
            m_findings.warning(
                "contrast", file.at(keyOf(text)),
                {"the contrast of " + colors.*text + " on " + std::string(keyOf(background)) + " " +
                     colors.*background + " is " + shown + ", below 4.5",
                 "many users cannot read the text", "darken one of the two, or lighten the other"});
        }
    }

    const Host& m_host;
    Findings& m_findings;
};

}  // namespace

PreflightSubject examineColours(const Host& host) {
    Findings findings("colours");
    if (!host.hasScreen()) return std::move(findings).finish("nothing for a screen in the bundle");
    if (!host.bundle.path(Constants::colorTheme, Constants::propertyListType))
        findings.warning("missing", {std::string(Constants::colorTheme) + ".plist"},
                         {"the bundle has no theme", "an error is logged and the library's own theme is used",
                          "add the file with the colours that differ"});
    std::size_t themes = 0;
    for (const auto& path : host.files(host.bundle.directory(), ".plist")) {
        if (!path.filename().string().starts_with(Constants::colorTheme)) continue;
        Theme(host, findings).examine(path);
        ++themes;
    }
    return std::move(findings).finish(counted(themes, "theme"));
}

}  // namespace torvel::preflight
