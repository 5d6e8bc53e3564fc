#include "TorvelPlatform/uikit/JPEGEnd.h"
#include "TorvelPlatform/uikit/qt/ImageFiles.h"

#include <QBuffer>
#include <QImageReader>
#include <algorithm>
#include <cstring>

namespace torvel {
namespace {

constexpr qint64 mostPixels = 32'000'000;

// Formats of pixels alone: the toolkit may have plug-ins for documents that name other files.
bool isWanted(const QByteArray& format) {
    static constexpr const char* wanted[] = {"png",  "jpeg", "gif",  "bmp",  "ico",
                                             "tiff", "webp", "heic", "heif", "avif"};
    return std::any_of(std::begin(wanted), std::end(wanted),
                       [&](const char* name) { return format == name; });
}

Orientation orientationOf(QImageIOHandler::Transformations transformation) {
    switch (static_cast<int>(transformation)) {
        case QImageIOHandler::TransformationMirror:
            return Orientation::upMirrored;
        case QImageIOHandler::TransformationFlip:
            return Orientation::downMirrored;
        case QImageIOHandler::TransformationRotate180:
            return Orientation::down;
        case QImageIOHandler::TransformationRotate90:
            return Orientation::right;
        case QImageIOHandler::TransformationRotate270:
            return Orientation::left;
        case QImageIOHandler::TransformationMirrorAndRotate90:
            return Orientation::rightMirrored;
        case QImageIOHandler::TransformationFlipAndRotate90:
            return Orientation::leftMirrored;
        default:
            return Orientation::up;
    }
}

// Whether a file of this format and size may be read at all.
bool isReadable(const QImageReader& reader, const Data& data) {
    const QSize size = reader.size();
    if (!isWanted(reader.format()) || qint64{size.width()} * size.height() > mostPixels) return false;
    return reader.format() != "jpeg" || reachesJPEGEnd(data);
}

}  // namespace

std::optional<DecodedImage> decodeImage(const Data& data) {
    QByteArray bytes = QByteArray::fromRawData(data.raw().data(), static_cast<qsizetype>(data.raw().size()));
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    if (!reader.canRead() || !isReadable(reader, data)) return std::nullopt;
    const QImage image = reader.read();
    if (image.isNull() || qint64{image.width()} * image.height() > mostPixels) return std::nullopt;
    return DecodedImage{toBitmap(image), orientationOf(reader.transformation())};
}

Bitmap toBitmap(const QImage& image) {
    const QImage straight = image.convertToFormat(QImage::Format_ARGB32);
    const auto width = static_cast<std::size_t>(straight.width());
    Bitmap bitmap{straight.width(), straight.height(), {}};
    bitmap.pixels.resize(width * static_cast<std::size_t>(straight.height()));
    for (int y = 0; y < straight.height(); ++y)
        std::memcpy(&bitmap.pixels[static_cast<std::size_t>(y) * width], straight.constScanLine(y),
                    width * 4);
    return bitmap;
}

}  // namespace torvel
