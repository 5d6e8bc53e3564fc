#include "TorvelLibrary/Utils/ColorUtils.h"
#include "TorvelPlatform/uikit/qt/UIImage.h"
#include "TorvelPlatform/uikit/qt/UIImageView.h"
#include "gallery/kit/Images.h"
#include "gallery/panes/Panes.h"

#include <QGridLayout>
#include <QPainter>
#include <QPainterPath>
#include <chrono>

namespace torvel::gallery {
namespace {

constexpr int side = 144;    // of a picture on the pane, in points
constexpr int pixels = 576;  // of the picture itself

struct Tint {
    Role role;
    const char* name;
};
constexpr Tint tints[] = {{&ColorDAO::primaryColor, "Primary"},
                          {&ColorDAO::circleAcceptColor, "Accept"},
                          {&ColorDAO::circleRejectColor, "Reject"},
                          {&ColorDAO::circlePendingStatusColor, "Pending"}};

void paintHills(QPainter& painter) {
    const struct {
        double top;
        QColor color;
    } hills[] = {{300, {0x8C, 0xB3, 0x69}}, {380, {0x5B, 0x8E, 0x55}}, {460, {0x2F, 0x5D, 0x50}}};
    for (const auto& hill : hills) {
        QPainterPath path(QPointF(0, hill.top + 60));
        path.cubicTo(150, hill.top - 90, 260, hill.top - 40, 340, hill.top + 40);
        path.cubicTo(420, hill.top + 100, 500, hill.top - 10, 576, hill.top);
        path.lineTo(576, 576);
        path.lineTo(0, 576);
        painter.fillPath(path, hill.color);
    }
}

// A landscape in a round window, transparent around it.
UIImage landscape() {
    QImage image(pixels, pixels, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath window;
    window.addRoundedRect(QRectF(24, 24, pixels - 48, pixels - 48), 140, 140);
    painter.setClipPath(window);
    QLinearGradient sky(0, 0, 0, 360);
    sky.setColorAt(0, QColor(0x5A, 0x8F, 0xD8));
    sky.setColorAt(1, QColor(0xFC, 0xD9, 0xA5));
    painter.fillRect(image.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xFF, 0xF3, 0xC4));
    painter.drawEllipse(QPointF(390, 190), 56, 56);
    paintHills(painter);
    painter.end();
    return toUIImage(image, double(pixels) / side);
}

// A result with how long it took.
template <class Work>
auto timed(double& milliseconds, const Work& work) {
    const auto start = std::chrono::steady_clock::now();
    auto result = work();
    milliseconds =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    return result;
}

QString fact(std::size_t bytes, double milliseconds) {
    return QString(QChar(0x2066)) +
           QString("%1 kB · %2 ms").arg(double(bytes) / 1024, 0, 'f', 0).arg(milliseconds, 0, 'f', 1) +
           QChar(0x2069);
}

QWidget* tile(const QString& name, const std::optional<UIImage>& image, const QString& detail) {
    auto* const card = new Card(&ColorDAO::surfaceColor, 2 * grid);
    card->content->setSpacing(4);
    auto* const view = new UIImageView;
    setImage(*view, image);
    view->setFixedSize(side, side);
    view->setAlignment(Qt::AlignCenter);
    view->setScaledContents(image && image->width() > side);
    card->content->addWidget(view, 0, Qt::AlignHCenter);
    card->content->addWidget(label(name, type::label()));
    card->content->addWidget(label(detail, type::caption(), &ColorDAO::secondaryTextColor));
    return card;
}

void addTiles(QGridLayout& tiles, const UIImage& original, const UIColor& colour) {
    double time = 0;
    const QString size = QString("%1 × %1").arg(pixels);
    const auto took = [&] { return ltr(QString::number(time, 'f', 1) + " ms"); };
    tiles.addWidget(tile(text("image_original"), original, size), 0, 0);
    const UIImage tinted = timed(time, [&] { return original.tint(colour); });
    tiles.addWidget(tile(text("image_tint"), tinted, took()), 0, 1);
    const UIImage filled = timed(time, [&] { return original.fillAlpha(colour); });
    tiles.addWidget(tile(text("image_fill"), filled, took()), 0, 2);
    const auto png = timed(time, [&] { return original.pngData(); });
    if (png)
        tiles.addWidget(tile("PNG", UIImage::fromData(*png, original.scale()), fact(png->size(), time)), 1,
                        0);
    const auto jpeg = timed(time, [&] { return original.jpegData(0.6); });
    if (jpeg)
        tiles.addWidget(
            tile("JPEG 0.6", UIImage::fromData(*jpeg, original.scale()), fact(jpeg->size(), time)), 1, 1);
    original.resizeImage(png ? double(png->size()) / 1024 / 4 : 1, [&](const UIImage& smaller) {
        const QString points = QString("%1 × %1").arg(smaller.width());
        tiles.addWidget(tile(text("image_resized"), smaller, points), 1, 2);
    });
}

}  // namespace

QWidget* makeImagesPane(Gallery& gallery) {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    lines->addWidget(wrapped(label(text("images_about"), type::body(), &ColorDAO::secondaryTextColor)));
    std::vector<QString> names;
    for (const Tint& tint : tints) names.emplace_back(tint.name);
    lines->addWidget(new Segment(names, gallery.imageColour, [&gallery](std::size_t chosen) {
        gallery.imageColour = chosen;
        gallery.refreshPane();
    }));
    const ColorDAO theme = ColorUtils::sharedInstance().theme.value_or(ColorDAO());
    auto* const tiles = new QGridLayout;
    tiles->setSpacing(2 * grid);
    addTiles(*tiles, landscape(), getUIColor(theme.*tints[gallery.imageColour].role));
    lines->addLayout(tiles);
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
