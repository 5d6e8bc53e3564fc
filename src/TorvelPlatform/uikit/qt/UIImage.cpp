#include "TorvelPlatform/uikit/qt/UIImage.h"

#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/uikit/AssetCatalog.h"
#include "TorvelPlatform/uikit/ImageSet.h"
#include "TorvelPlatform/uikit/Tint.h"
#include "TorvelPlatform/uikit/qt/ImageFiles.h"

#include <cmath>
#include <iterator>

namespace torvel {
namespace {

namespace fs = std::filesystem;

bool isWhole(const Bitmap& bitmap) {
    return bitmap.width > 0 && bitmap.height > 0 &&
           bitmap.pixels.size() ==
               static_cast<std::size_t>(bitmap.width) * static_cast<std::size_t>(bitmap.height);
}

// More than a picture of the greatest size has.
constexpr std::uintmax_t mostBytes = 128 * 1024 * 1024;

std::optional<UIImage> readImage(const std::string& path, double scale) {
    std::error_code failed;
    if (fs::file_size(path, failed) > mostBytes || failed) return std::nullopt;
    const auto bytes = readFile(path);
    return bytes ? UIImage::fromData(bytes.value(), scale) : std::nullopt;
}

std::optional<UIImage> imageOfCatalog(std::string_view name, const Bundle& bundle) {
    const auto folder = assetFolder(bundle, name, "imageset");
    if (!folder) return std::nullopt;
    const auto contents = readFile(*folder / "Contents.json");
    const auto file =
        contents ? imageOfSet(contents.value().raw(), ScreenEnvironment::style, ScreenEnvironment::scale)
                 : std::nullopt;
    auto image = file ? readImage(*folder / file->name, file->scale) : std::nullopt;
    if (!image) reportDiagnostic("The image set \"" + folder->string() + "\" gives no image.");
    return image;
}

std::optional<UIImage> imageOfFile(const std::string& stem, const std::string& type, const Bundle& bundle) {
    const double scale = ScreenEnvironment::scale;
    static constexpr const char* orders[][3] = {{"", "@2x", "@3x"}, {"@2x", "@3x", ""}, {"@3x", "@2x", ""}};
    for (const char* fineness : orders[scale > 2 ? 2 : scale > 1 ? 1 : 0])
        if (const auto file = bundle.path(stem + fineness, type))
            if (auto image = UIImage::fromFile(*file)) return image;
    return std::nullopt;
}

// A name without a type is that of a PNG, and what stands behind a full stop may be none.
std::optional<UIImage> imageOfFile(std::string_view name, const Bundle& bundle) {
    const fs::path path(name);
    std::optional<UIImage> image;
    if (path.has_extension())
        image = imageOfFile((path.parent_path() / path.stem()).string(), path.extension().string().substr(1),
                            bundle);
    return image ? image : imageOfFile(std::string(name), "png", bundle);
}

// How a photograph is to be turned, by how the device is held and which camera took it. Deliberately
// asymmetric: hosts' cameras are mounted that way.
struct Turns {
    std::optional<ImageOrientation> front, other;
};
constexpr Turns turnsByDevice[] = {{},                                              // unknown
                                   {ImageOrientation::leftMirrored, std::nullopt},  // portrait
                                   {ImageOrientation::left, ImageOrientation::left},
                                   {ImageOrientation::down, ImageOrientation::up},
                                   {ImageOrientation::up, ImageOrientation::down}};

}  // namespace

UIImage::UIImage(Bitmap bitmap, double scale, ImageOrientation orientation)
    : m_bitmap(isWhole(bitmap) ? std::make_shared<const Bitmap>(std::move(bitmap)) : nullptr),
      m_scale(scale > 0 ? scale : 1),
      m_orientation(orientation) {}

std::optional<UIImage> UIImage::fromData(const Data& data, double scale) {
    auto decoded = decodeImage(data);
    if (!decoded) return std::nullopt;
    return UIImage(std::move(decoded->bitmap), scale, decoded->orientation);
}

std::optional<UIImage> UIImage::fromFile(const std::string& path) {
    const std::string stem = fs::path(path).stem().string();
    return readImage(path, stem.ends_with("@3x") ? 3 : stem.ends_with("@2x") ? 2 : 1);
}

std::optional<UIImage> UIImage::named(std::string_view name, const Bundle& bundle) {
    auto image = imageOfCatalog(name, bundle);
    return image ? image : imageOfFile(name, bundle);
}

UIImage UIImage::initImage(std::string_view imageName, const Bundle& targetBundle) {
    if (auto image = named(imageName, Bundle::main())) return *std::move(image);
    if (auto image = named(imageName, targetBundle)) return *std::move(image);
    if (auto image = named("noImage", Bundle::library())) return *std::move(image);
    fatalError("The library's bundle \"" + Bundle::library().directory().string() +
               "\" has no image \"noImage\"");
}

double UIImage::width() const {
    if (!m_bitmap) return 0;
    return (turnsSides(m_orientation) ? m_bitmap->height : m_bitmap->width) / m_scale;
}

double UIImage::height() const {
    if (!m_bitmap) return 0;
    return (turnsSides(m_orientation) ? m_bitmap->width : m_bitmap->height) / m_scale;
}

UIImage UIImage::tint(const UIColor& tintColor) const {
    const auto color = tintColor.components();
    return m_bitmap && color ? UIImage(tinted(*viewed(), *color), m_scale) : *this;
}

UIImage UIImage::fillAlpha(const UIColor& fillColor) const {
    const auto color = fillColor.components();
    return m_bitmap && color ? UIImage(silhouette(*viewed(), *color), m_scale) : *this;
}

std::optional<UIImage> UIImage::fixedOrientation(std::optional<bool> isFrontCameraEnabled) const {
    if (!m_bitmap) return std::nullopt;
    const auto held = static_cast<std::size_t>(ScreenEnvironment::orientation.load());
    if (held >= std::size(turnsByDevice)) return *this;
    const auto& [front, other] = turnsByDevice[held];
    const std::optional<ImageOrientation> turn = isFrontCameraEnabled == true ? front : other;
    return turn ? UIImage(m_bitmap, m_scale, *turn) : *this;
}

void UIImage::resizeImage(double targetSizeInKB, const Completion<UIImage>& completion) const {
    const auto png = pngData();
    if (!png) return;
    const double ratio = static_cast<double>(png->size()) / 1024 / targetSizeInKB;
    const double newWidth = std::ceil(width() / ratio), newHeight = std::ceil(height() / ratio);
    // No image has a side of nothing, nor more pixels than one may have: whoever asks for such a copy, by a
    // target of no size or of an image of a tiny scale, has the image as it is.
    if (!(ratio > 1 && newWidth >= 1 && newHeight >= 1 && newWidth * newHeight <= mostPixels))
        return completion(*this);
    const QSize size(static_cast<int>(newWidth), static_cast<int>(newHeight));
    completion(UIImage(toBitmap(toQImage().scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation))));
}

void UIImage::convertToBase64(const Completion<std::string>& completion) const {
    if (const auto png = pngData()) completion(Base64::encode(png->bytes()));
}

std::optional<Data> UIImage::pngData() const { return m_bitmap ? encodePNG(*viewed()) : std::nullopt; }

std::optional<Data> UIImage::jpegData(double quality) const {
    return m_bitmap ? encodeJPEG(*viewed(), quality) : std::nullopt;
}

std::shared_ptr<const Bitmap> UIImage::viewed() const {
    if (m_orientation == ImageOrientation::up) return m_bitmap;
    return std::make_shared<const Bitmap>(upright(*m_bitmap, m_orientation));
}

QImage UIImage::toQImage() const {
    if (!m_bitmap) return {};
    using Shared = std::shared_ptr<const Bitmap>;
    auto* const owner = new Shared(viewed());
    const Bitmap& bitmap = **owner;
    QImage image(
        reinterpret_cast<const uchar*>(bitmap.pixels.data()), bitmap.width, bitmap.height,
        QImage::Format_ARGB32, [](void* shared) { delete static_cast<Shared*>(shared); }, owner);
    image.setDevicePixelRatio(m_scale);
    return image;
}

}  // namespace torvel
