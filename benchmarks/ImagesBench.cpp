#include "Bench.h"
#include "TorvelPlatform/uikit/qt/UIImage.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include <cairo.h>

namespace torvel::bench {
namespace {

constexpr int side = 1024;
const UIColor tintColor(0.1, 0.4, 0.9);

QByteArray pngByToolkit(const QImage& image) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "PNG");
    return bytes;
}

// A bank card as a designer draws it: a gradient, rings and lines with smooth edges, clear around.
UIImage drawnArt() {
    QImage picture(side, side, QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient gradient(0, 0, side, side);
    gradient.setColorAt(0, QColor(20, 60, 160));
    gradient.setColorAt(1, QColor(120, 40, 180));
    painter.setBrush(gradient);
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(32, 192, 960, 640, 48, 48);
    painter.setBrush(Qt::NoBrush);
    for (int i = 1; i < 9; ++i) {
        painter.setPen(QPen(QColor(255, 255, 255, 28 * i), 6));
        painter.drawEllipse(QPointF(760, 420), 24.0 * i, 24.0 * i);
        painter.drawLine(QPointF(96, 600 + 22.5 * i), QPointF(96 + 90.0 * i, 600 + 22.5 * i));
    }
    painter.end();
    const Data file = Data(pngByToolkit(picture).toStdString());
    return *UIImage::fromData(file);
}

// A photograph: slow changes and the noise of a sensor.
UIImage photograph() {
    Bitmap bitmap{side, side, {}};
    std::uint32_t state = 1;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) {
            const auto channel = [&](double phase) {
                state = state * 1664525 + 1013904223;
                const double slow = 120 + 90 * std::sin(x / 97.0 + phase) * std::cos(y / 131.0 - phase);
                return static_cast<unsigned>(slow + (state >> 28));
            };
            bitmap.pixels.push_back(0xFF000000 | channel(0) << 16 | channel(1) << 8 | channel(2));
        }
    return UIImage(std::move(bitmap));
}

// --- Tint ---

using Surface = std::unique_ptr<cairo_surface_t, decltype(&cairo_surface_destroy)>;
using Context = std::unique_ptr<cairo_t, decltype(&cairo_destroy)>;

Surface newSurface() {
    return {cairo_image_surface_create(CAIRO_FORMAT_ARGB32, side, side), cairo_surface_destroy};
}

// The image as cairo keeps images, which is not timed.
Surface surfaceOf(const UIImage& image) {
    Surface surface = newSurface();
    const QImage pixels = image.toQImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    std::copy_n(pixels.constBits(), pixels.sizeInBytes(), cairo_image_surface_get_data(surface.get()));
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

// The four steps by cairo's operators, into a new surface.
Surface tintByOperators(cairo_surface_t* image) {
    Surface surface = newSurface();
    const Context context(cairo_create(surface.get()), cairo_destroy);
    cairo_set_source_rgb(context.get(), 0, 0, 0);
    cairo_paint(context.get());
    cairo_set_source_surface(context.get(), image, 0, 0);
    cairo_paint(context.get());
    const auto color = *tintColor.components();
    cairo_set_operator(context.get(), CAIRO_OPERATOR_HSL_COLOR);
    cairo_set_source_rgb(context.get(), color.red, color.green, color.blue);
    cairo_paint(context.get());
    cairo_set_operator(context.get(), CAIRO_OPERATOR_DEST_IN);
    cairo_set_source_surface(context.get(), image, 0, 0);
    cairo_paint(context.get());
    return surface;
}

// The least that a tint by table can be: its table is there already, an opaque colour needs no mixing, and
// the result has its place.
void bareTableLoop(const Bitmap& from, const std::vector<std::uint32_t>& table,
                   std::vector<std::uint32_t>& to) {
    for (std::size_t i = 0; i < from.pixels.size(); ++i) {
        const std::uint32_t pixel = from.pixels[i], alpha = pixel >> 24;
        const std::uint32_t light =
            30 * (pixel >> 16 & 0xFF) + 59 * (pixel >> 8 & 0xFF) + 11 * (pixel & 0xFF);
        to[i] = alpha << 24 | table[(light * alpha + 127) / 255];
    }
}

// What the tint makes of each luminosity, read from tints of greys.
std::vector<std::uint32_t> tableOfTint() {
    std::vector<std::uint32_t> table(25501);
    for (std::uint32_t i = 0; i < table.size(); ++i) {
        const std::uint32_t grey = (i + 50) / 100;
        table[i] =
            UIImage({1, 1, {0xFF000000 | grey * 0x010101}}).tint(tintColor).bitmap()->pixels[0] & 0xFFFFFF;
    }
    return table;
}

void checkSameTint(const UIImage& ours, cairo_surface_t* theirs) {
    const QImage pixels = ours.toQImage().convertToFormat(QImage::Format_ARGB32_Premultiplied);
    const unsigned char* const bytes = cairo_image_surface_get_data(theirs);
    for (qsizetype i = 0; i < pixels.sizeInBytes(); ++i)
        if (std::abs(pixels.constBits()[i] - bytes[i]) > 3) giveUp("the two tints differ");
}

void measureTint(Report& report, const std::string& name, const UIImage& image) {
    const Surface surface = surfaceOf(image);
    checkSameTint(image.tint(tintColor), tintByOperators(surface.get()).get());
    const auto table = tableOfTint();
    std::vector<std::uint32_t> place(image.bitmap()->pixels.size());
    const Rounds rounds = takeTurns({repeating([&] { keep(image.tint(tintColor)); }),
                                     repeating([&] { keep(tintByOperators(surface.get())); }), repeating([&] {
                                         bareTableLoop(*image.bitmap(), table, place);
                                         keep(place);
                                     })},
                                    {Clock::thread, 15, 0.03});
    report.time(name + "-over-cairo", "torvel", rounds.time(0));
    report.time(name + "-over-cairo", "cairo", rounds.time(1));
    report.atMost(name + "-over-cairo", rounds.ratio(0, 1), 0.5);
    report.time(name + "-over-table-loop", "loop", rounds.time(2));
    report.atMost(name + "-over-table-loop", rounds.ratio(0, 2), 1.3);
}

// --- PNG ---

void measurePNG(Report& report, const std::string& name, const UIImage& image, QImage::Format format) {
    const QImage pixels = image.toQImage().convertToFormat(format);
    const Data ours = *image.pngData();
    const QByteArray theirs = pngByToolkit(pixels);
    if (QImage::fromData(QByteArray::fromStdString(ours.raw())) != QImage::fromData(theirs))
        giveUp("the two files differ");
    const Rounds rounds =
        takeTurns({repeating([&] { keep(image.pngData()); }), repeating([&] { keep(pngByToolkit(pixels)); })},
                  {Clock::thread, 9, 0.1});
    report.time(name + "-over-qt", "torvel", rounds.time(0));
    report.time(name + "-over-qt", "qt", rounds.time(1));
    report.atMost(name + "-over-qt", rounds.ratio(0, 1), 0.5);
    report.atMost(name + "-size-over-qt",
                  static_cast<double>(ours.size()) / static_cast<double>(theirs.size()), 1.3);
}

}  // namespace
}  // namespace torvel::bench

int main() {
    using namespace torvel::bench;
    Report report("images");
    const torvel::UIImage art = drawnArt(), photo = photograph();
    measureTint(report, "tint-drawn-1024", art);
    measureTint(report, "tint-photo-1024", photo);
    measurePNG(report, "png-drawn-1024", art, QImage::Format_ARGB32);
    measurePNG(report, "png-photo-1024", photo, QImage::Format_RGB32);
    return report.exitCode();
}
