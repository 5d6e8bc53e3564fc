#include "gallery/kit/Card.h"

#include "TorvelLibrary/Utils/Views.h"

#include <QPainter>
#include <QScrollBar>

namespace torvel::gallery {

QString directed(const QString& text) {
    if (isRTL()) return QChar(0x200F) + text;
    const bool isForeign = text.isRightToLeft();  // it stays in its own direction, at this one's side
    return isForeign ? QString(QChar(0x200E)) + QChar(0x2068) + text + QChar(0x2069) : text;
}

QLabel* label(const QString& text, const QFont& font, Role ink) {
    auto* const made = new QLabel(directed(text));
    made->setFont(font);
    made->setForegroundRole(QPalette::WindowText);  // also in a button
    made->setTextFormat(Qt::PlainText);
    QPalette palette = made->palette();
    palette.setColor(QPalette::WindowText, color(ink));
    made->setPalette(palette);
    return made;
}

QLabel* wrapped(QLabel* label) {
    label->setWordWrap(true);
    return label;
}

QVBoxLayout* column(QWidget* parent, int spacing) {
    auto* const made = parent ? new QVBoxLayout(parent) : new QVBoxLayout;
    made->setContentsMargins({});
    made->setSpacing(spacing);
    return made;
}

QHBoxLayout* row(int spacing) {
    auto* const made = new QHBoxLayout;
    made->setContentsMargins({});
    made->setSpacing(spacing);
    return made;
}

Card::Card(Role fill, int padding) : content(column(this)), m_fill(fill) {
    content->setContentsMargins(padding, padding, padding, padding);
}

void Card::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color(m_fill));
    painter.drawRoundedRect(rect(), 2 * grid, 2 * grid);
}

Card* titledCard(const QString& title) {
    auto* const card = new Card;
    card->content->addWidget(label(title, type::heading()));
    return card;
}

Badge::Badge(const QString& text, Role ink) : QLabel(text), m_ink(ink) {
    setFont(type::caption());
    setAlignment(Qt::AlignCenter);
    setContentsMargins(grid, 2, grid, 2);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Maximum);
    QPalette colours = palette();
    colours.setColor(QPalette::WindowText, color(ink));
    setPalette(colours);
}

void Badge::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor tint = color(m_ink);
    tint.setAlphaF(0.12F);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tint);
    painter.drawRoundedRect(rect(), height() / 2.0, height() / 2.0);
    QLabel::paintEvent(event);
}

QWidget* emptyState(Icon icon, const QString& text) {
    auto* const made = new QWidget;
    auto* const content = column(made, 2 * grid);
    content->setContentsMargins(grid, 3 * grid, grid, 3 * grid);
    content->addWidget(
        new IconTile(icon, &ColorDAO::circlePrimaryColor, &ColorDAO::circleSecondaryBackgroundColor, 56), 0,
        Qt::AlignHCenter);
    QLabel* const words = wrapped(label(text, type::body(), &ColorDAO::secondaryTextColor));
    words->setAlignment(Qt::AlignCenter);
    content->addWidget(words);
    return made;
}

QLabel* code(const QString& text) {
    QLabel* const made = wrapped(label(QString(), type::code(), &ColorDAO::secondaryTextColor));
    made->setLayoutDirection(Qt::LeftToRight);
    QString breaking;  // the toolkit breaks at words alone; a zero-width space is a place to break
    for (const QChar character : text) {
        breaking.append(character);
        if (!character.isHighSurrogate()) breaking.append(QChar(0x200B));
    }
    made->setText(breaking);
    return made;
}

QScrollArea* scrolling(QWidget* content) {
    auto* const area = new QScrollArea;
    area->setFrameShape(QFrame::NoFrame);
    area->setWidgetResizable(true);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->viewport()->setAutoFillBackground(false);
    area->setWidget(content);
    content->setAutoFillBackground(false);
    QColor handle = color(&ColorDAO::secondaryTextColor);
    area->verticalScrollBar()->setStyleSheet(
        QString("QScrollBar { width: 8px; background: transparent; }"
                "QScrollBar::handle { background: rgba(%1, %2, %3, 80); border-radius: 3px; min-height: "
                "32px; margin: 1px; }"
                "QScrollBar::add-line, QScrollBar::sub-line { height: 0; }"
                "QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }")
            .arg(handle.red())
            .arg(handle.green())
            .arg(handle.blue()));
    return area;
}

}  // namespace torvel::gallery
