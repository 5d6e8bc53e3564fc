#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelLibrary/Utils/TextBounds.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"
#include "gallery/panes/Panes.h"

#include <QPainter>
#include <array>
#include <cmath>

namespace torvel::gallery {
namespace {

struct Style {
    const char* name;
    const UIFont& (*font)();
};

#define GALLERY_STYLE(WEIGHT, STYLE, SIZE) {#STYLE, &FontCache::get##WEIGHT##STYLE##Font},
#define GALLERY_WEIGHT(WEIGHT, SUFFIX) {#WEIGHT, {{TORVEL_FONT_STYLES(GALLERY_STYLE, WEIGHT)}}},

struct Weight {
    const char* name;
    std::array<Style, 14> styles;
};
constexpr Weight weights[] = {TORVEL_FONT_WEIGHTS(GALLERY_WEIGHT)};

#undef GALLERY_STYLE
#undef GALLERY_WEIGHT

// The library's size of a text over the text itself.
class MeasuredText final : public QWidget {
  public:
    MeasuredText(const QString& text, const UIFont& font, double width)
        : m_text(text),
          m_font(font),
          m_width(width),
          m_height(torvel::height(text.toStdString(), width, font)) {
        setFixedHeight(int(std::ceil(m_height)) + 2);
    }
    double measured() const { return m_height; }

  protected:
    void paintEvent(QPaintEvent*) override {
        const bool mirrored = layoutDirection() == Qt::RightToLeft;
        const QRectF box(mirrored ? width() - m_width - 1 : 1, 1, m_width, m_height);
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QColor tint = color(&ColorDAO::primaryColor);
        painter.setPen(QPen(tint, 1, Qt::DashLine));
        tint.setAlphaF(0.06F);
        painter.setBrush(tint);
        painter.drawRect(box);
        painter.setPen(color(&ColorDAO::regularTextColor));
        // The toolkit draws at whole pixels; a large size made smaller comes out exact.
        QFont large = toQFont(m_font);
        constexpr int pixels = 100;
        large.setPixelSize(pixels);
        painter.setFont(large);
        const double scale = m_font.pointSize() / pixels;
        painter.scale(scale, scale);
        painter.drawText(QRectF(box.topLeft() / scale, box.size() / scale),
                         Qt::TextWordWrap | (mirrored ? Qt::AlignRight : Qt::AlignLeft), m_text);
    }

  private:
    QString m_text;
    UIFont m_font;
    double m_width, m_height;
};

QWidget* measuringCard() {
    Card* const card = titledCard(text("type_measure"));
    const UIFont& font = FontCache::getRegularSubTitle14Font();
    for (const double width : {300.0, 480.0}) {
        auto* const sample = new MeasuredText(text("type_sample"), font, width);
        card->content->addWidget(sample);
        const QString size = QString::number(width) + " × " + QString::number(sample->measured(), 'f', 3);
        card->content->addWidget(label(ltr(size), type::caption(), &ColorDAO::secondaryTextColor));
    }
    return card;
}

QWidget* styleRow(const Style& style) {
    auto* const made = new QWidget;
    QHBoxLayout* const line = row(2 * grid);
    made->setLayout(line);
    const UIFont& font = style.font();
    QVBoxLayout* const words = column(nullptr, 0);
    words->addWidget(label(style.name, type::label()));
    const double base = font.pointSize() * 375.0 / ScreenEnvironment::widthInPoints;
    const QString sizes = QString("%1 → %2 pt").arg(base, 0, 'f', 0).arg(font.pointSize(), 0, 'f', 2);
    words->addWidget(label(ltr(sizes), type::caption(), &ColorDAO::secondaryTextColor));
    auto* const left = new QWidget;
    left->setFixedWidth(136);
    left->setLayout(words);
    line->addWidget(left);
    line->addWidget(label(text("type_word"), toQFont(font)), 1);
    return made;
}

}  // namespace

QWidget* makeTypePane(Gallery& gallery) {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    std::vector<QString> names;
    for (const Weight& weight : weights) names.emplace_back(weight.name);
    lines->addWidget(new Segment(names, gallery.fontWeight, [&gallery](std::size_t chosen) {
        gallery.fontWeight = chosen;
        gallery.refreshPane();
    }));
    const Weight& weight = weights[gallery.fontWeight];
    auto* const card = new Card;
    card->content->setSpacing(grid / 2);
    card->content->addWidget(label(text("type_about", toQt(weight.styles[0].font().fontName())),
                                   type::caption(), &ColorDAO::secondaryTextColor));
    for (const Style& style : weight.styles) card->content->addWidget(styleRow(style));
    lines->addWidget(card);
    lines->addWidget(measuringCard());
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
