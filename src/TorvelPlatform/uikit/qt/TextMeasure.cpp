#include "TorvelPlatform/uikit/qt/TextMeasure.h"

#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"

#include <QFont>
#include <QFontMetricsF>
#include <QTextLayout>
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

// A text of one paragraph for the toolkit: line feeds break lines, other controls are spaces.
QString laidOutText(std::string_view text) {
    QString lines = QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
    for (QChar& character : lines) {
        if (character == u'\n') character = QChar::LineSeparator;
        if (character == u'\t' || character == u'\r') character = u' ';
    }
    return lines;
}

}  // namespace

TextSize boundingSize(std::string_view text, const UIFont& font, std::optional<double> width) {
    expectMainThread("boundingSize()");
    if (!(font.pointSize() > 0)) return {0, 0};
    const bool wraps = width.value_or(0) > 0;
    const double pixels = wraps ? referenceSize : sizeForOneLine(text.size());
    const double scale = font.pointSize() / pixels;

    QFont reference = toQFont(font);
    reference.setPixelSize(static_cast<int>(pixels));
    QTextLayout layout(laidOutText(text), reference);
    // Between words, and within those alone that are longer than a line. The flags of the simpler
    // boundingRect() do not say that: the two together break anywhere.
    QTextOption option;
    option.setWrapMode(wraps ? QTextOption::WrapAtWordBoundaryOrAnywhere : QTextOption::NoWrap);
    layout.setTextOption(option);

    const double limit = wraps ? std::min(*width / scale, longestLine) : longestLine;
    const double gap = QFontMetricsF(reference).leading();
    double widest = 0, height = -gap;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(limit);
        widest = std::max(widest, line.naturalTextWidth());
        height += gap + line.ascent() + line.descent();  // its height() would be rounded
    }
    layout.endLayout();
    return {widest * scale, height * scale};
}

}  // namespace torvel
