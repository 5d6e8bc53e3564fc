#include "gallery/kit/Icons.h"

#include <QPainter>
#include <QPainterPath>
#include <QTextStream>

namespace torvel::gallery {
namespace {

// Lines on a field of 24 x 24: M x y starts one, L x y and C x y x y x y go on, Z closes; O x y r is a
// circle, R x y w h r a rectangle with round corners.
struct Drawing {
    Icon icon;
    const char* lines;
    bool points = false;  // somewhere: mirrored with the text
};

constexpr Drawing drawings[] = {
    {Icon::home, "M 3.5 11 L 12 4 L 20.5 11 M 6 9.5 L 6 20 L 18 20 L 18 9.5 M 10 20 L 10 14 L 14 14 L 14 20"},
    {Icon::send, "M 20.5 3.5 L 3.5 10 L 10.5 13.5 L 14 20.5 Z M 20.5 3.5 L 10.5 13.5", true},
    {Icon::card, "R 3 5.5 18 13 2.5 M 3 10 L 21 10 M 6.5 15 L 10.5 15"},
    {Icon::list, "M 9 6 L 20 6 M 9 12 L 20 12 M 9 18 L 20 18 O 4.5 6 0.8 O 4.5 12 0.8 O 4.5 18 0.8", true},
    {Icon::gear, "M 4 7 L 12 7 M 18 7 L 20 7 O 15 7 2.6 M 4 17 L 6 17 M 12 17 L 20 17 O 9 17 2.6", true},
    {Icon::lock, "R 5 10.5 14 10 2.5 M 8 10.5 L 8 7.5 C 8 2.2 16 2.2 16 7.5 L 16 10.5 M 12 14.5 L 12 16.5"},
    {Icon::unlock, "R 5 10.5 14 10 2.5 M 8 10.5 L 8 7.5 C 8 2.6 14.8 2.2 15.8 6 M 12 14.5 L 12 16.5"},
    {Icon::check, "M 5 12.5 L 10 17.5 L 19 7"},
    {Icon::cross, "M 6.5 6.5 L 17.5 17.5 M 17.5 6.5 L 6.5 17.5"},
    {Icon::globe, "O 12 12 9 M 3 12 L 21 12 M 12 3 C 7 8 7 16 12 21 M 12 3 C 17 8 17 16 12 21"},
    {Icon::moon, "M 20 14.5 C 14 17 7 10 9.5 4 C 2 6.5 2 18 11 20.5 C 15 21 18.5 18.5 20 14.5 Z"},
    {Icon::sun,
     "O 12 12 4 M 12 2.5 L 12 4.5 M 12 19.5 L 12 21.5 M 2.5 12 L 4.5 12 M 19.5 12 L 21.5 12 "
     "M 5.3 5.3 L 6.7 6.7 M 17.3 17.3 L 18.7 18.7 M 5.3 18.7 L 6.7 17.3 M 17.3 6.7 L 18.7 5.3"},
    {Icon::palette,
     "M 12 3 C 0 3 0 21 12 21 C 14.5 21 14 19 13.3 18 C 12.5 16.7 13.5 15.3 15 15.3 L 17.5 "
     "15.3 C 24 15.3 22 3 12 3 Z O 7.5 12 0.9 O 10 7.8 0.9 O 15 7.8 0.9"},
    {Icon::type,
     "M 4 7 L 4 4.5 L 16 4.5 L 16 7 M 10 4.5 L 10 19.5 M 7.5 19.5 L 12.5 19.5 M 16 12 L 21 12 M "
     "18.5 12 L 18.5 19.5"},
    {Icon::font, "M 4 19 L 9.5 5 L 15 19 M 6 14 L 13 14 O 18.5 16.5 2.5 M 21 13.5 L 21 19"},
    {Icon::image, "R 3.5 4.5 17 15 2.5 O 9 9.5 1.6 M 4 17.5 L 9.5 13 L 12.5 15.5 L 16 11.5 L 20 15.5"},
    {Icon::coins, "O 9 9 5.5 M 16.5 9.8 C 24 13 19 22.5 12 19.5 C 10.8 19 10 18.2 9.3 17.2 M 9 6.8 L 9 11.2"},
    {Icon::route,
     "O 6 18.5 2.2 O 18 5.5 2.2 M 8.2 18.5 L 15 18.5 C 19.5 18.5 19.5 12 15 12 L 9 12 C 4.5 12 "
     "4.5 5.5 9 5.5 L 15.8 5.5",
     true},
    {Icon::network,
     "M 7.5 4 L 7.5 20 M 3.8 7.7 L 7.5 4 L 11.2 7.7 M 16.5 20 L 16.5 4 M 12.8 16.3 L 16.5 20 "
     "L 20.2 16.3"},
    {Icon::store,
     "M 4 6 C 4 2.3 20 2.3 20 6 C 20 9.7 4 9.7 4 6 Z M 4 6 L 4 18 C 4 21.7 20 21.7 20 18 L 20 6 "
     "M 4 12 C 4 15.7 20 15.7 20 12"},
    {Icon::log, "R 3.5 4.5 17 15 2.5 M 7.5 9 L 10.5 12 L 7.5 15 M 12.5 15 L 16.5 15"},
    {Icon::back, "M 14.5 5.5 L 8 12 L 14.5 18.5", true},
    {Icon::forward, "M 9.5 5.5 L 16 12 L 9.5 18.5", true},
    {Icon::trash,
     "M 4.5 6.5 L 19.5 6.5 M 9.5 6.5 L 9.5 4 L 14.5 4 L 14.5 6.5 M 6.5 6.5 L 7.3 20 L 16.7 20 L "
     "17.5 6.5"},
    {Icon::wallet,
     "R 3.5 6.5 17 13.5 3 M 3.8 8.5 C 4 5.5 6 4.2 8 4.2 L 17 4.2 M 20.5 11 L 15.5 11 C 12.3 11 "
     "12.3 15.7 15.5 15.7 L 20.5 15.7",
     true},
    {Icon::inbox,
     "M 3.5 13.5 L 6.5 5 L 17.5 5 L 20.5 13.5 L 20.5 19 L 3.5 19 Z M 3.5 13.5 L 8.5 13.5 C 8.5 "
     "17.5 15.5 17.5 15.5 13.5 L 20.5 13.5"},
    {Icon::key, "O 8 15.5 4 M 11 12.7 L 19.5 4.5 M 16 8 L 19 11 M 13.6 10.3 L 15.4 12.1", true},
    {Icon::plus, "M 12 5.5 L 12 18.5 M 5.5 12 L 18.5 12"},
};

QPointF point(QTextStream& lines) {
    double x = 0, y = 0;
    lines >> x >> y;
    return {x, y};
}

void addCurve(QPainterPath& path, QTextStream& lines) {
    const QPointF first = point(lines), second = point(lines);
    path.cubicTo(first, second, point(lines));
}

void addCircle(QPainterPath& path, QTextStream& lines) {
    const QPointF centre = point(lines);
    double radius = 0;
    lines >> radius;
    path.addEllipse(centre, radius, radius);
}

void addRectangle(QPainterPath& path, QTextStream& lines) {
    const QPointF corner = point(lines), size = point(lines);
    double radius = 0;
    lines >> radius;
    path.addRoundedRect(QRectF(corner, QSizeF(size.x(), size.y())), radius, radius);
}

QPainterPath parsed(const char* text) {
    QString source(text);
    QTextStream lines(&source);
    QPainterPath path;
    QString step;
    while (!(lines >> step).atEnd() || !step.isEmpty()) {
        if (step == "M") path.moveTo(point(lines));
        if (step == "L") path.lineTo(point(lines));
        if (step == "C") addCurve(path, lines);
        if (step == "O") addCircle(path, lines);
        if (step == "R") addRectangle(path, lines);
        if (step == "Z") path.closeSubpath();
        step.clear();
    }
    return path;
}

}  // namespace

void drawIcon(QPainter& painter, Icon icon, const QRectF& box, const QColor& ink, bool mirrored) {
    for (const Drawing& drawing : drawings) {
        if (drawing.icon != icon) continue;
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(box.center());
        painter.scale(box.width() / 24 * (mirrored && drawing.points ? -1 : 1), box.height() / 24);
        painter.translate(-12, -12);
        painter.setPen(QPen(ink, 1.7, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.setBrush(Qt::NoBrush);
        painter.drawPath(parsed(drawing.lines));
        painter.restore();
    }
}

IconTile::IconTile(Icon icon, Role ink, Role tile, int size) : m_icon(icon), m_ink(ink), m_tile(tile) {
    setFixedSize(size, size);
}

void IconTile::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color(m_tile));
    painter.drawRoundedRect(rect(), width() * 0.3, width() * 0.3);
    const double inset = width() * 0.24;
    drawIcon(painter, m_icon, QRectF(rect()).adjusted(inset, inset, -inset, -inset), color(m_ink),
             layoutDirection() == Qt::RightToLeft);
}

}  // namespace torvel::gallery
