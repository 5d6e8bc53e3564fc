#pragma once

#include "TorvelPlatform/uikit/qt/UIImage.h"

class QLabel;

namespace torvel {

// A view of an image. For the main thread.
using UIImageView = QLabel;

// Shows an image, at its size in points; an absent one, or one without a bitmap, clears the view.
void setImage(UIImageView& view, const std::optional<UIImage>& image);
// Shows the image that UIImage::initImage() gives.
void loadImage(UIImageView& view, std::string_view imageName, const Bundle& targetBundle);
// Shows the image in the bytes of a file; clears the view when there is none.
void loadImageFromData(UIImageView& view, const Data& imageData);
// The same of bytes in base64 (RFC 4648, 4), other characters than its own skipped; a text that is no
// base64 even so leaves the view unchanged.
void loadImageFromBase64(UIImageView& view, std::string_view base64String);

}  // namespace torvel
