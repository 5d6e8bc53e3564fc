#include "gallery/kit/Controls.h"

#include "TorvelLibrary/Utils/Views.h"
#include "TorvelPlatform/uikit/qt/UITextField.h"
#include "gallery/kit/Card.h"

#include <QEvent>
#include <QLineEdit>
#include <QPainter>

namespace torvel::gallery {
namespace {

constexpr int fieldHeight = 6 * grid;

void makeClickable(QAbstractButton& button, const std::function<void()>& clicked) {
    button.setCursor(Qt::PointingHandCursor);
    button.setFocusPolicy(Qt::TabFocus);
    QObject::connect(&button, &QAbstractButton::clicked, &button, clicked);
}

void drawRound(QPainter& painter, const QRectF& box, const QColor& fill, double radius) {
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(fill);
    painter.drawRoundedRect(box, radius, radius);
}

// A choice of a segment.
class Choice final : public QAbstractButton {
  public:
    Choice(const QString& text, bool chosen, const std::function<void()>& clicked) {
        setText(text);
        setCheckable(true);
        setAutoExclusive(true);
        setChecked(chosen);
        setFont(type::label());
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        makeClickable(*this, clicked);
    }

    QSize sizeHint() const override { return {fontMetrics().horizontalAdvance(text()) + 3 * grid, 4 * grid}; }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        if (isChecked()) drawRound(painter, rect(), color(&ColorDAO::primaryColor), height() / 2.0);
        painter.setPen(color(isChecked() ? &ColorDAO::onPrimaryColor : &ColorDAO::secondaryTextColor));
        painter.drawText(rect(), Qt::AlignCenter, text());
    }
};

}  // namespace

Pill::Pill(const QString& text, Look look, std::function<void()> clicked, Icon icon)
    : m_look(look), m_icon(icon) {
    setText(text);
    setFont(look == Look::filled ? type::strong() : type::label());
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Fixed);
    makeClickable(*this, clicked);
}

QSize Pill::sizeHint() const {
    const int icon = m_icon == Icon::none ? 0 : 3 * grid;
    const int height = m_look == Look::filled ? 6 * grid : 4 * grid;
    return {fontMetrics().horizontalAdvance(text()) + icon + 4 * grid, height};
}

QColor Pill::ink() const {
    if (!isEnabled()) return color(&ColorDAO::circleDisabledColor);
    return color(m_look == Look::filled ? &ColorDAO::onPrimaryColor : &ColorDAO::primaryColor);
}

QColor Pill::fill() const {
    if (m_look == Look::plain) return Qt::transparent;
    if (!isEnabled() || m_look == Look::tonal) return color(&ColorDAO::secondaryBackgroundColor);
    const QColor primary = color(&ColorDAO::primaryColor);
    return isDown() ? primary.darker(115) : underMouse() ? primary.lighter(108) : primary;
}

void Pill::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    drawRound(painter, rect(), fill(), height() / 2.0);
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const int words = fontMetrics().horizontalAdvance(text());
    const int icon = m_icon == Icon::none ? 0 : 3 * grid;
    QRect content(0, 0, words + icon, height());
    content.moveCenter(rect().center());
    const int iconX = mirrored ? content.right() - 2 * grid : content.left();
    if (icon) drawIcon(painter, m_icon, QRectF(iconX, (height() - 18) / 2.0, 18, 18), ink(), mirrored);
    painter.setPen(ink());
    painter.drawText(content.adjusted(mirrored ? 0 : icon, 0, mirrored ? -icon : 0, 0), Qt::AlignCenter,
                     text());
    if (hasFocus()) {
        painter.setPen(QPen(color(&ColorDAO::primaryColor).lighter(130), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), height() / 2.0 - 1,
                                height() / 2.0 - 1);
    }
}

Segment::Segment(const std::vector<QString>& choices, std::size_t chosen,
                 std::function<void(std::size_t)> choose) {
    auto* const line = new QHBoxLayout(this);
    line->setContentsMargins(4, 4, 4, 4);
    line->setSpacing(4);
    for (std::size_t i = 0; i < choices.size(); ++i)
        line->addWidget(new Choice(choices[i], i == chosen, [choose, i] { choose(i); }), 1);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
}

void Segment::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    drawRound(painter, rect(), color(&ColorDAO::circleTextFieldBGColor), height() / 2.0);
}

NavigationRow::NavigationRow(Icon icon, const QString& text, bool chosen, std::function<void()> clicked)
    : m_icon(icon) {
    setText(text);
    setFont(chosen ? type::strong() : type::body());
    setCheckable(true);
    setChecked(chosen);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    makeClickable(*this, clicked);
}

void NavigationRow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    if (isChecked() || underMouse() || hasFocus())
        drawRound(painter, rect(), color(&ColorDAO::secondaryBackgroundColor), 1.5 * grid);
    const QColor ink = color(isChecked() ? &ColorDAO::primaryColor : &ColorDAO::secondaryTextColor);
    const int side = 20, inset = 12;
    const int iconX = mirrored ? width() - inset - side : inset;
    drawIcon(painter, m_icon, QRectF(iconX, (height() - side) / 2.0, side, side), ink, mirrored);
    const int textInset = inset + side + inset;
    painter.setPen(isChecked() ? ink : color(&ColorDAO::regularTextColor));
    painter.drawText(rect().adjusted(mirrored ? grid : textInset, 0, mirrored ? -textInset : -grid, 0),
                     Qt::AlignVCenter | (mirrored ? Qt::AlignRight : Qt::AlignLeft), text());
}

Field::Field(const QString& name, std::string& draft, std::function<void()> edited)
    : m_edit(new QLineEdit), m_message(label(QString(), type::caption())) {
    auto* const content = column(this, 4);
    content->addWidget(label(name, type::label(), &ColorDAO::secondaryTextColor));
    m_edit->setFrame(false);
    m_edit->setFixedHeight(fieldHeight);
    m_edit->setFont(type::body());
    m_edit->setAlignment(isRTL() ? Qt::AlignRight | Qt::AlignAbsolute : Qt::AlignLeft);
    m_edit->setStyleSheet(
        QString("QLineEdit { background: transparent; border: none; padding: 0 16px; color: %1; "
                "selection-background-color: %2; selection-color: %3; }")
            .arg(color(&ColorDAO::regularTextColor).name(), color(&ColorDAO::primaryColor).name(),
                 color(&ColorDAO::onPrimaryColor).name()));
    m_edit->installEventFilter(this);
    setPrepopulatedText(*m_edit, draft);
    content->addWidget(m_edit);
    content->addWidget(wrapped(m_message));
    m_message->hide();
    connect(m_edit, &QLineEdit::textEdited, this, [this, &draft, edited] {
        draft = getRawValue(*m_edit);
        edited();
    });
}

void Field::say(const QString& message, Tone tone) {
    m_tone = tone;
    const Role ink = tone == Tone::good  ? &ColorDAO::circleAcceptColor
                     : tone == Tone::bad ? &ColorDAO::circleRejectColor
                                         : &ColorDAO::secondaryTextColor;
    QPalette colours = m_message->palette();
    colours.setColor(QPalette::WindowText, color(ink));
    m_message->setPalette(colours);
    m_message->setText(directed(message));
    m_message->setVisible(!message.isEmpty());
    update();
}

Field* Field::configured(const char* name, int longest, bool secret) {
    m_edit->setObjectName(name);
    m_edit->setMaxLength(longest);
    if (secret) m_edit->setEchoMode(QLineEdit::Password);
    return this;
}

void Field::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRectF box = QRectF(m_edit->geometry()).adjusted(0.75, 0.75, -0.75, -0.75);
    drawRound(painter, box, color(&ColorDAO::circleTextFieldBGColor), 1.5 * grid);
    const Role ring = m_tone == Tone::bad    ? &ColorDAO::circleRejectColor
                      : m_edit->hasFocus()   ? &ColorDAO::primaryColor
                      : m_tone == Tone::good ? &ColorDAO::circleAcceptColor
                                             : nullptr;
    if (!ring) return;
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(color(ring), 1.5));
    painter.drawRoundedRect(box, 1.5 * grid, 1.5 * grid);
}

bool Field::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) update();
    return false;
}

}  // namespace torvel::gallery
