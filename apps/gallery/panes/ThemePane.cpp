#include "gallery/panes/Panes.h"

#include <QGridLayout>
#include <QPainter>

namespace torvel::gallery {
namespace {

// The colour that one is drawn on, or that is drawn on it.
Role partnerOf(Role role) {
    if (role == &ColorDAO::primaryColor) return &ColorDAO::onPrimaryColor;
    if (role == &ColorDAO::onPrimaryColor) return &ColorDAO::primaryColor;
    if (role == &ColorDAO::surfaceColor || role == &ColorDAO::backgroundColor ||
        role == &ColorDAO::circleTextFieldBGColor || role == &ColorDAO::circleLightBackgroundColor)
        return &ColorDAO::regularTextColor;
    if (role == &ColorDAO::secondaryBackgroundColor) return &ColorDAO::primaryColor;
    if (role == &ColorDAO::circleSecondaryBackgroundColor) return &ColorDAO::circlePrimaryColor;
    if (role == &ColorDAO::circleTopGradientColor || role == &ColorDAO::circleBottomGradientColor)
        return nullptr;  // white stands on them
    return &ColorDAO::surfaceColor;
}

// A colour with a letter of its partner's on it.
class Swatch final : public QWidget {
  public:
    Swatch(const QColor& fill, const QColor& ink) : m_fill(fill), m_ink(ink) { setFixedHeight(48); }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(color(&ColorDAO::secondaryBackgroundColor), 1));
        painter.setBrush(m_fill);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 12, 12);
        painter.setPen(m_ink);
        painter.setFont(type::heading());
        painter.drawText(rect(), Qt::AlignCenter, "Aa");
    }

  private:
    QColor m_fill, m_ink;
};

// WCAG 2.1: 4.5 for text, 3 for large text and signs.
Badge* contrastBadge(double ratio) {
    const char* const level = ratio >= 7 ? "AAA" : ratio >= 4.5 ? "AA" : ratio >= 3 ? "3+" : "—";
    const Role ink = ratio >= 4.5 ? &ColorDAO::circleAcceptColor
                     : ratio >= 3 ? &ColorDAO::circlePendingStatusColor
                                  : &ColorDAO::circleRejectColor;
    return new Badge(QString::number(ratio, 'f', 1) + "  " + level, ink);
}

QWidget* swatchCard(const ColorDAO::Field& field) {
    const QColor fill = color(field.color);
    const Role partner = partnerOf(field.color);
    const QColor ink = partner ? color(partner) : QColor(Qt::white);
    auto* const card = new Card(&ColorDAO::surfaceColor, 1.5 * grid);
    card->content->setSpacing(4);
    card->content->addWidget(new Swatch(fill, ink));
    QString name = toQt(field.key);
    name.remove("Color");
    card->content->addWidget(label(name, type::label()));
    QHBoxLayout* const line = row(4);
    line->addWidget(label(ltr(fill.name().toUpper()), type::code(), &ColorDAO::secondaryTextColor), 1);
    line->addWidget(contrastBadge(contrast(fill, ink)));
    card->content->addLayout(line);
    return card;
}

}  // namespace

QWidget* makeThemePane() {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    lines->addWidget(wrapped(label(text("theme_about"), type::body(), &ColorDAO::secondaryTextColor)));
    auto* const tiles = new QGridLayout;
    tiles->setSpacing(1.5 * grid);
    int position = 0;
    for (const ColorDAO::Field& field : ColorDAO::fields()) {
        tiles->addWidget(swatchCard(field), position / 3, position % 3);
        ++position;
    }
    lines->addLayout(tiles);
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
