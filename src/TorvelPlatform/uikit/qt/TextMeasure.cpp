#include "TorvelPlatform/uikit/qt/TextMeasure.h"

#include "TorvelPlatform/uikit/qt/Fonts.h"

#include <QFont>
#include <QFontMetricsF>
#include <algorithm>
#include <cmath>

namespace torvel {
namespace {

// The toolkit's metrics are of whole pixels. So everything is measured at this size, where a pixel is a
// thousandth of the em, and then scaled.
constexpr double referenceSize = 1000;
// The toolkit cuts lines that are longer (INT_MAX / 256).
constexpr double longestLine = 8'000'000;

// A line that may have to hold the whole text is measured smaller where it would be cut.
double sizeForOneLine(std::size_t length) {
    return std::clamp(std::floor(longestLine / static_cast<double>(length + 1)), 1.0, referenceSize);
}

}  // namespace

TextSize boundingSize(std::string_view text, const UIFont& font, std::optional<double> width) {
    if (!(font.pointSize() > 0)) return {0, 0};
    const bool wraps = width.value_or(0) > 0;
    const double pixels = wraps ? referenceSize : sizeForOneLine(text.size());
    const double scale = font.pointSize() / pixels;

    QFont reference = toQFont(font);
    reference.setPixelSize(static_cast<int>(pixels));
    const QRectF limits(0, 0, wraps ? std::min(*width / scale, longestLine) : longestLine, 0);
    const int breaking = wraps ? Qt::TextWordWrap | Qt::TextWrapAnywhere : 0;
    const QRectF bounds = QFontMetricsF(reference).boundingRect(
        limits, breaking, QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    return {bounds.width() * scale, bounds.height() * scale};
}

}  // namespace torvel
