#include "TorvelPlatform/uikit/qt/UIImageView.h"

#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/MainThread.h"

#include <QImage>
#include <QLabel>
#include <QPixmap>
#include <algorithm>

namespace torvel {
namespace {

std::string withoutUnknownCharacters(std::string_view base64) {
    std::string known;
    std::copy_if(base64.begin(), base64.end(), std::back_inserter(known), [](char c) {
        const char letter = static_cast<char>(c | 0x20);
        return (letter >= 'a' && letter <= 'z') || (c >= '0' && c <= '9') || c == '+' || c == '/' || c == '=';
    });
    return known;
}

}  // namespace

void setImage(UIImageView& view, const std::optional<UIImage>& image) {
    expectMainThread("UIImageView");
    view.setPixmap(image ? QPixmap::fromImage(image->toQImage()) : QPixmap());
}

void loadImage(UIImageView& view, std::string_view imageName, const Bundle& targetBundle) {
    setImage(view, UIImage::initImage(imageName, targetBundle));
}

void loadImageFromData(UIImageView& view, const Data& imageData) {
    setImage(view, UIImage::fromData(imageData));
}

void loadImageFromBase64(UIImageView& view, std::string_view base64String) {
    if (const auto bytes = Base64::decode(withoutUnknownCharacters(base64String)))
        loadImageFromData(view, *bytes);
}

}  // namespace torvel
