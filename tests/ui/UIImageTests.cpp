#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/foundation/UserDirectories.h"
#include "TorvelPlatform/uikit/qt/UIImageView.h"
#include "TorvelTesting/HostFixture.h"

#include <QBuffer>
#include <QImage>
#include <QLabel>

namespace torvel {
namespace {

Data encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, format, 100);
    return Data(bytes.toStdString());
}

template <class PixelAt>
UIImage drawn(int width, int height, PixelAt pixelAt, double scale = 1) {
    Bitmap bitmap{width, height, {}};
    for (int i = 0; i < width * height; ++i) bitmap.pixels.push_back(pixelAt(i % width, i / width));
    return UIImage(std::move(bitmap), scale);
}

UIImage plain(int width, int height, std::uint32_t pixel = 0xFF336699, double scale = 1) {
    return drawn(
        width, height, [=](int, int) { return pixel; }, scale);
}

// What no compressor makes smaller.
UIImage noise(int width, int height) {
    std::uint32_t state = 1;
    const auto next = [&](int, int) { return 0xFF000000 | (state = state * 1664525 + 1013904223) >> 8; };
    return drawn(width, height, next);
}

// Reads quadrants in red, green, blue and white, row by row.
std::string quadrantsOf(const UIImage& image) {
    std::string names;
    for (const int i : {0, 1, 2, 3}) {
        const QImage pixels = image.toQImage();
        const QRgb at =
            pixels.pixel(pixels.width() * (i % 2 * 2 + 1) / 4, pixels.height() * (i / 2 * 2 + 1) / 4);
        names += "?bg?r??w"[(at >> 7 & 1) | (at >> 14 & 2) | (at >> 21 & 4)];
    }
    return names;
}

class UIImageTest : public testing::HostFixture {};

TEST_F(UIImageTest, DecodesWhatOtherToolsWrite) {
    QImage source(4, 2, QImage::Format_ARGB32);
    source.fill(0xFF808080);
    source.setPixel(3, 1, 0xFF000000);
    for (const char* format : {"png", "jpeg"})
        for (const auto pixels : {QImage::Format_Indexed8, QImage::Format_Grayscale8, QImage::Format_Mono,
                                  QImage::Format_RGBA64, QImage::Format_Grayscale16}) {
            const QImage converted = source.convertToFormat(pixels, Qt::ThresholdDither);
            const auto image = UIImage::fromData(encoded(converted, format));
            ASSERT_TRUE(image && image->width() == 4) << format << pixels;
            const QImage again = converted.convertToFormat(QImage::Format_ARGB32);
            for (const QPoint at : {QPoint(0, 0), QPoint(3, 1)})
                EXPECT_NEAR(qGreen(again.pixel(at)), qGreen(image->toQImage().pixel(at)), 2) << pixels;
        }
    QImage clear(1, 1, QImage::Format_RGBA64);
    clear.fill(QColor(255, 0, 0, 1));
    EXPECT_EQ(UIImage::fromData(encoded(clear, "png"))->bitmap()->pixels[0], 0x01FF0000u);
}

TEST_F(UIImageTest, GivesNoneForWhatIsCutShortOrTooLargeOrNoImage) {
    const UIImage picture = noise(64, 64);
    const std::string gif("GIF89a\2\0\1\0\x80\0\0\xFF\0\0\0\0\0!\xFE\2hi\0,\0\0\0\0\2\0\1\0\0\2\2D\n\0;", 41);
    const Data files[] = {*picture.pngData(), *picture.jpegData(0.9), Data(gif)};
    for (const Data& file : files)
        for (const std::size_t cut : {std::size_t{0}, std::size_t{14}, file.size() / 10, file.size() / 2})
            EXPECT_EQ(UIImage::fromData(Data(file.raw().substr(0, file.size() - cut))).has_value(), cut == 0)
                << file.raw().substr(0, 4) << cut;
    std::string endless = files[1].raw(), thumbnail = endless;
    const std::size_t scan = endless.find("\xFF\xDA");
    for (int i = 0; i < 100; ++i) endless.insert(scan, "\xFF\xDA\0\2", 4);  // each a pass over the image
    thumbnail.insert(2, "\xFF\xE1\0\6\xFF\xD8\xFF\xD9", 8);
    EXPECT_TRUE(UIImage::fromData(Data(thumbnail)));
    thumbnail.resize(thumbnail.size() - 2);
    const std::string vast = encoded(QImage(40000, 1000, QImage::Format_Mono), "png").raw();
    const std::string drawing = "/* XPM */ static char*a[]={\"1 1 1 1\",\"a c red\",\"a\"};";
    for (const std::string& bytes :
         {endless, thumbnail, vast, drawing, std::string(), std::string(99, '\xFF')})
        EXPECT_FALSE(UIImage::fromData(Data(bytes))) << bytes.substr(0, 20);
}

TEST_F(UIImageTest, ViewsAPhotographAsItsEXIFSays) {
    const char* const views[] = {"rgbw", "grwb", "wbgr", "bwrg", "rbgw", "brwg", "wgbr", "gwrb"};
    const auto quadrants = [](int x, int y) {
        return y < 8 ? (x < 16 ? 0xFFFF0000 : 0xFF00FF00) : (x < 16 ? 0xFF0000FF : 0xFFFFFFFF);
    };
    const std::string file = drawn(32, 16, quadrants).jpegData(1)->raw();
    for (int exif = 1; exif <= 8; ++exif) {
        std::string segment(
            "\xFF\xE1\0\x22"
            "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\0\0\0\0\0\0\0",
            36);
        segment[29] = static_cast<char>(exif);
        const auto image = UIImage::fromData(Data(file.substr(0, 2) + segment + file.substr(2)));
        EXPECT_EQ(image->width(), exif < 5 ? 32 : 16);
        for (const auto& view : {image, UIImage::fromData(*image->pngData())})
            EXPECT_EQ(quadrantsOf(*view), views[exif - 1]) << exif;
    }
}

TEST_F(UIImageTest, FilesKeepWhatTheyShould) {
    for (const UIImage& image : {UIImage({2, 1, {0x01FF0000, 0x00FFFFFF}}), noise(33, 17)})
        EXPECT_EQ(*UIImage::fromData(*image.pngData())->bitmap(), *image.bitmap());
    // Red beside blue, which a JPEG of half the colours would mix.
    const UIImage stripes = drawn(16, 1, [](int x, int) { return x % 2 ? 0xFFFF0000 : 0xFF0000FF; });
    EXPECT_NEAR(UIImage::fromData(*stripes.jpegData(1))->bitmap()->pixels[1] >> 16 & 0xFF, 255, 4);
    EXPECT_NEAR(UIImage::fromData(*plain(8, 8, 0x00123456).jpegData(1))->bitmap()->pixels[9] & 0xFF, 255, 1);
    EXPECT_FALSE(plain(70000, 1).jpegData(1) || UIImage().jpegData(1) || UIImage().pngData());
    EXPECT_EQ(UIImage({2, 2, {1}}).bitmap(), nullptr);
}

TEST_F(UIImageTest, RecoloursWhatIsViewed) {
    const UIImage turned({2, 1, {0xFF000000, 0x80FFFFFF}}, 2, ImageOrientation::right);
    const UIImage filled = turned.fillAlpha({1, -1, 0.5, 0.5});
    EXPECT_EQ(*filled.bitmap(), (Bitmap{1, 2, {0x80FF0080, 0x40FF0080}}));
    EXPECT_EQ(filled.scale(), 2);
    EXPECT_EQ(turned.tint({1, 0, 0}).bitmap()->height, 2);
    EXPECT_EQ(turned.tint(UIColor::patternImage(nullptr)).bitmap(), turned.bitmap());
    EXPECT_EQ(UIImage().tint({1, 0, 0}).bitmap(), nullptr);
}

TEST_F(UIImageTest, ResizesOnceByHowManyTimesItIsTooLarge) {
    const UIImage picture = noise(400, 200);
    const double size = static_cast<double>(picture.pngData()->size()) / 1024;
    const struct {
        double target;
        int width, height;
    } rows[] = {{size / 4, 100, 50}, {size / 7, 58, 29}, {0.001, 1, 1},
                {size, 400, 200},    {0, 400, 200},      {-3, 400, 200}};
    for (const auto& [target, width, height] : rows)
        picture.resizeImage(target, [&, w = width, h = height](const UIImage& image) {
            EXPECT_TRUE(image.width() == w && image.height() == h) << image.width();
        });
    UIImage().resizeImage(1, [&](const UIImage&) { FAIL(); });
    const auto isUnchanged = [](const UIImage& image) { EXPECT_EQ(image.scale(), 1e-300); };
    UIImage(*picture.bitmap(), 1e-300).resizeImage(1, isUnchanged);
    UIImage().convertToBase64([&](const std::string&) { FAIL(); });

    // A board of single pixels: whoever skips some sees black or white.
    const auto board = [](int x, int y) { return (x ^ y) & 1 ? 0xFFFFFFFF : 0xFF000000; };
    const UIImage fine = drawn(512, 512, board, 2);
    fine.resizeImage(static_cast<double>(fine.pngData()->size()) / 1024 / 8, [](const UIImage& image) {
        EXPECT_TRUE(image.bitmap()->width == 32 && image.scale() == 1);
        for (const std::uint32_t pixel : image.bitmap()->pixels) ASSERT_NEAR(pixel & 0xFF, 127, 8);
    });
    picture.convertToBase64([&](const std::string& text) {
        EXPECT_EQ(*UIImage::fromData(*Base64::decode(text))->bitmap(), *picture.bitmap());
    });
}

TEST_F(UIImageTest, OrientationIsFixedByDeviceAndCamera) {
    using Device = ScreenEnvironment::Orientation;
    const UIImage picture({1, 1, {0}}, 3, ImageOrientation::rightMirrored);
    const struct {
        Device device;
        int front, other;  // the platform's numbers
    } rows[] = {
        {Device::unknown, 7, 7},       {Device::portrait, 6, 7},       {Device::portraitUpsideDown, 2, 2},
        {Device::landscapeLeft, 1, 0}, {Device::landscapeRight, 0, 1}, {Device::faceUp, 7, 7}};
    for (const auto& [device, front, other] : rows) {
        ScreenEnvironment::orientation = device;
        for (const std::optional<bool> isFront : {std::optional(true), std::optional(false), {}}) {
            const auto fixed = picture.fixedOrientation(isFront);
            EXPECT_EQ(static_cast<int>(fixed->orientation()), isFront == true ? front : other);
            EXPECT_TRUE(fixed->scale() == 3 && !UIImage().fixedOrientation(isFront));
        }
    }
}

TEST_F(UIImageTest, IsFoundByNameInTheMainBundleThenTheOtherThenTheLibrary) {
    const std::string set = "Media.xcassets/card.imageset/";
    addResource(set + "Contents.json", R"({"images":[{"idiom":"universal","filename":"c","scale":"2x"}]})");
    const auto add = [&](const std::string& name, int side) {
        addResource(name, plain(side, side).pngData()->raw());
    };
    add(set + "c", 20), add("logo.png", 1), add("logo@2x.png", 4), add("photo.jpg", 3),
        add("photo.v2.png", 6);
    addResource("broken.png", "no image");
    add("other/broken.png", 5);
    const Bundle other = *Bundle::at(directory() / "other");
    const struct {
        const char* name;
        double screen, width, scale;
    } rows[] = {{"card", 1, 10, 2},     {"logo", 1, 1, 1},     {"logo", 2, 2, 2},   {"logo", 3, 2, 2},
                {"photo.jpg", 1, 3, 1}, {"photo.v2", 1, 6, 1}, {"broken", 1, 5, 1}, {"unknown", 1, 96, 1},
                {"unknown", 2, 96, 2},  {"../logo", 1, 96, 1}, {"", 1, 96, 1}};
    for (const auto& row : rows) {
        ScreenEnvironment::scale = row.screen;
        const UIImage image = UIImage::initImage(row.name, other);
        EXPECT_TRUE(image.width() == row.width && image.scale() == row.scale) << row.name;
    }
    const auto withoutPlaceholder = [&] {
        Bundle::setLibrary(directory());
        UIImage::initImage("unknown", other);
    };
    EXPECT_DEATH(withoutPlaceholder(), "has no image \"noImage\"");
}

TEST_F(UIImageTest, ViewsShowWhatTheyAreGiven) {
    QLabel view;
    loadImage(view, "unknown", Bundle::main());
    EXPECT_EQ(view.pixmap().width(), 96);
    setImage(view, plain(8, 4, 0xFF112233, 2));
    EXPECT_EQ(view.sizeHint(), QSize(4, 2));
    plain(3, 3).convertToBase64([&](std::string text) { loadImageFromBase64(view, text.insert(5, " \n-")); });
    loadImageFromBase64(view, "abc");  // no base64: nothing happens
    EXPECT_EQ(view.pixmap().width(), 3);
    loadImageFromBase64(view, "YWJj");  // no image
    EXPECT_TRUE(view.pixmap().isNull());
}

TEST_F(UIImageTest, DocumentsKeepAnImageUnderItsName) {
    EXPECT_FALSE(Utils::readImageFileFromDocumentDirectory("id card"));
    const auto write = [](std::string_view name, const UIImage& image) {
        return logOf([&] { Utils::writeImageFileToDocumentDirectory(name, image); });
    };
    for (const UIImage& image : {plain(5, 5), plain(9, 9), plain(70000, 1), UIImage()})
        EXPECT_EQ(write("id card", image) + write("../id card", image), "");
    EXPECT_EQ(Utils::readImageFileFromDocumentDirectory("id card")->width(), 9);
    std::filesystem::create_directories(UserDirectories::documents() / "taken" / "by");
    const std::string log = write("taken", plain(1, 1));
    for (const char* part : {"DEBUG[Utils]", "Directory not empty", "Is a directory"})
        EXPECT_NE(log.find(part), log.npos) << part;
}

}  // namespace
}  // namespace torvel
