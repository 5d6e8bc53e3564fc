#include "gallery/kit/Style.h"

#include "TorvelLibrary/Utils/ColorUtils.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"

#include <algorithm>
#include <cmath>

namespace torvel::gallery {
namespace {

double linear(double channel) {
    return channel <= 0.03928 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

}  // namespace

QColor color(Role role) {
    const ColorDAO theme = ColorUtils::sharedInstance().theme.value_or(ColorDAO());
    const UIColor::Components parts = *getUIColor(theme.*role).components();
    return QColor::fromRgbF(float(parts.red), float(parts.green), float(parts.blue), float(parts.alpha));
}

double contrast(const QColor& a, const QColor& b) {
    const auto [low, high] = std::minmax({luminance(a), luminance(b)});
    return (high + 0.05) / (low + 0.05);
}

namespace type {
QFont display() { return toQFont(FontCache::getBoldBigHeadlineFont()); }
QFont title() { return toQFont(FontCache::getBoldHeadline24Font()); }
QFont heading() { return toQFont(FontCache::getBoldTitle16Font()); }
QFont body() { return toQFont(FontCache::getRegularSubTitle14Font()); }
QFont strong() { return toQFont(FontCache::getSemiBoldSubTitle14Font()); }
QFont label() { return toQFont(FontCache::getMediumSmall12Font()); }
QFont caption() { return toQFont(FontCache::getRegularSmallFont()); }

QFont code() {
    QFont font("DejaVu Sans Mono");
    font.setPixelSize(11);
    font.setHintingPreference(QFont::PreferNoHinting);
    return font;
}
}  // namespace type

QString text(std::string_view key) { return toQt(Bundle::main().localizedString(key, std::nullopt)); }

QString ltr(const QString& text) { return QChar(0x2066) + text + QChar(0x2069); }

QString text(std::string_view key, const QString& argument) { return text(key).replace("%@", argument); }

}  // namespace torvel::gallery
