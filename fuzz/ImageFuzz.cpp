#include "Fuzz.h"
#include "TorvelPlatform/uikit/qt/UIImage.h"

using namespace torvel;

// An image file: what decodes is a whole bitmap, and its PNG decodes to the pixels that are viewed.
void fuzz(std::string_view bytes) {
    const auto image = UIImage::fromData(Data(bytes));
    if (!image) return;
    const Bitmap* const bitmap = image->bitmap();
    mustHold(bitmap != nullptr && bitmap->pixels.size() <= 32'000'000);
    if (bitmap->pixels.size() > 65536) return;  // the rest is for small ones, many of them
    const auto again = UIImage::fromData(*image->pngData());
    mustHold(again && *again->bitmap() == upright(*bitmap, image->orientation()));
    image->tint({0.2, 0.4, 0.6}).resizeImage(0.1, [](const UIImage& small) { mustHold(small.width() >= 1); });
    mustHold(image->jpegData(0.5).has_value() == (image->width() <= 65500 && image->height() <= 65500));
}
