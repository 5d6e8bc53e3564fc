#pragma once

#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/Data.h"
#include "TorvelPlatform/uikit/Bitmap.h"
#include "TorvelPlatform/uikit/UIColor.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

class QImage;

namespace torvel {

// An image: a bitmap that copies share, its scale and the orientation to view it in. Drawing, encoding,
// recolouring and resizing all take it as it is viewed. A value; safe from any thread, without a
// QApplication.
class UIImage {
  public:
    // The image without a bitmap.
    UIImage() = default;
    // An image of pixels, `scale` of which make a point; no bitmap when its size and its pixels disagree.
    explicit UIImage(Bitmap bitmap, double scale = 1, ImageOrientation orientation = ImageOrientation::up);

    // The image in the bytes of a PNG, JPEG or GIF file (its first frame), or of a WebP, HEIC or AVIF file
    // where the toolkit has the plug-in; with the orientation that EXIF says. Absent when it is none, is cut
    // short, or has more than 32 million pixels. Memory stays below half a gigabyte.
    static std::optional<UIImage> fromData(const Data& data, double scale = 1);
    // The same of a file of at most 128 MiB; "@2x" or "@3x" at the end of its name is its scale.
    static std::optional<UIImage> fromFile(const std::string& path);

    // The image of a bundle: the set "<name>.imageset" of its asset catalogues, in the appearance and the
    // scale that ScreenEnvironment tells, else the file "<name>", else "<name>.png", with "@2x" or "@3x"
    // before the type where the screen is finer. Read anew at each call. Absent when there is none that
    // decodes.
    static std::optional<UIImage> named(std::string_view name, const Bundle& bundle);
    // The named image of the main bundle, else of the other one, else "noImage" of the library's bundle; a
    // library without that one stops the process.
    static UIImage initImage(std::string_view imageName, const Bundle& targetBundle);

    // The pixels as they are stored, before the orientation; nullptr without a bitmap.
    const Bitmap* bitmap() const { return m_bitmap.get(); }
    // How many pixels make a point.
    double scale() const { return m_scale; }
    // How the bitmap is turned for viewing.
    ImageOrientation orientation() const { return m_orientation; }
    // The width in points as it is viewed; 0 without a bitmap.
    double width() const;
    // The height in points as it is viewed; 0 without a bitmap.
    double height() const;

    // A copy in the hue of a colour, with the image's own luminance and shape. A pattern has no hue: the
    // copy then is unchanged.
    UIImage tint(const UIColor& tintColor) const;
    // A flat silhouette of the image in a colour; a pattern leaves it unchanged.
    UIImage fillAlpha(const UIColor& fillColor) const;

    // A copy of the photograph, turned as the device (ScreenEnvironment::orientation) was held; absent
    // without a bitmap. Deliberately different for the two cameras, whose sensors are built in differently.
    std::optional<UIImage> fixedOrientation(std::optional<bool> isFrontCameraEnabled) const;

    // Receives a result, on the caller's thread, before the operation returns.
    template <class Result>
    using Completion = std::function<void(const Result&)>;
    // Hands over the image itself when its PNG has at most so many kilobytes (of 1024 bytes), else a copy,
    // one pixel a point, both sides divided by how many times larger it is. Deliberately once, by the
    // sides rather than the area, and without looking at the result's size. A copy of no size, or of more
    // than 32 million pixels, is the image itself. What has no PNG is not handed
    // over.
    void resizeImage(double targetSizeInKB, const Completion<UIImage>& completion) const;
    // Hands over the PNG in base64 (RFC 4648, 4) on one line; nothing without a bitmap.
    void convertToBase64(const Completion<std::string>& completion) const;

    // The image as a PNG file, lossless; absent without a bitmap.
    std::optional<Data> pngData() const;
    // The image as a JPEG file of a quality from 0 to 1, transparent parts on white, colours at full
    // resolution; absent without a bitmap or when a side is beyond 65500 pixels.
    std::optional<Data> jpegData(double quality) const;

    // The image for drawing with the toolkit; null without a bitmap.
    QImage toQImage() const;

  private:
    UIImage(std::shared_ptr<const Bitmap> bitmap, double scale, ImageOrientation orientation)
        : m_bitmap(std::move(bitmap)), m_scale(scale), m_orientation(orientation) {}
    // The bitmap turned upright, this one's own where nothing is to be turned.
    std::shared_ptr<const Bitmap> viewed() const;

    std::shared_ptr<const Bitmap> m_bitmap;
    double m_scale = 1;
    ImageOrientation m_orientation = ImageOrientation::up;
};

}  // namespace torvel
