#include "TorvelPlatform/uikit/ImageFileEnd.h"
#include "TorvelPlatform/uikit/qt/ImageFiles.h"

#include <QBuffer>
#include <QImageReader>
#include <cstring>

namespace torvel {
namespace {

// What pictures are sent and shipped in. The toolkit knows more: documents that name other files, and formats
// whose readers fill up what is missing.
bool isWhole(const QByteArray& format, const Data& data) {
    if (format == "jpeg") return reachesJPEGEnd(data);
    if (format == "gif") return reachesGIFImageEnd(data);
    return format == "png" || format == "webp" || format == "heic" || format == "heif" || format == "avif";
}

// The toolkit says how to transform the image in three bits: mirror, flip, a quarter turn.
constexpr ImageOrientation orientations[] = {ImageOrientation::up,           ImageOrientation::upMirrored,
                                             ImageOrientation::downMirrored, ImageOrientation::down,
                                             ImageOrientation::right,        ImageOrientation::rightMirrored,
                                             ImageOrientation::leftMirrored, ImageOrientation::left};

bool isTooLarge(const QSize& size) { return qint64{size.width()} * size.height() > mostPixels; }

}  // namespace

std::optional<DecodedImage> decodeImage(const Data& data) {
    QByteArray bytes = QByteArray::fromRawData(data.raw().data(), static_cast<qsizetype>(data.raw().size()));
    QBuffer buffer(&bytes);
    QImageReader reader(&buffer);
    if (!isWhole(reader.format(), data) || isTooLarge(reader.size())) return std::nullopt;
    const QImage image = reader.read();
    if (image.isNull() || isTooLarge(image.size())) return std::nullopt;
    const auto transformation = static_cast<std::size_t>(static_cast<int>(reader.transformation()));
    return DecodedImage{toBitmap(image), orientations[transformation % 8]};
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
