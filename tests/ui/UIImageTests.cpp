#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelPlatform/foundation/Base64.h"
#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/foundation/UserDirectories.h"
#include "TorvelPlatform/uikit/qt/UIImageView.h"
#include "TorvelTesting/HostFixture.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <QLabel>

namespace torvel {
namespace {

Data encoded(const QImage& image, const char* format) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QImageWriter writer(&buffer, format);
    writer.setQuality(100);
    writer.write(image);
    return Data(bytes.toStdString());
}

UIImage plain(int width, int height, std::uint32_t pixel = 0xFF336699, double scale = 1) {
    const auto count = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    return UIImage({width, height, std::vector<std::uint32_t>(count, pixel)}, scale);
}

// What no compressor makes smaller.
UIImage noise(int width, int height) {
    Bitmap bitmap{width, height, {}};
    std::uint32_t state = 1;
    for (int i = 0; i < width * height; ++i)
        bitmap.pixels.push_back(0xFF000000 | (state = state * 1664525 + 1013904223) >> 8);
    return UIImage(std::move(bitmap));
}

// Quadrants in red, green, blue and white, in rows.
UIImage quadrants(int width, int height) {
    Bitmap bitmap{width, height, {}};
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            bitmap.pixels.push_back(y < height / 2 ? (x < width / 2 ? 0xFFFF0000 : 0xFF00FF00)
                                                   : (x < width / 2 ? 0xFF0000FF : 0xFFFFFFFF));
    return UIImage(std::move(bitmap));
}

std::string quadrantsOf(const QImage& image) {
    std::string names;
    for (const int y : {1, 3})
        for (const int x : {1, 3}) {
            const QColor color = image.pixelColor(image.width() * x / 4, image.height() * y / 4);
            const int bits = (color.red() > 127) | (color.green() > 127) << 1 | (color.blue() > 127) << 2;
            names += "?rg?b??w"[bits];
        }
    return names;
}

class UIImageTest : public testing::HostFixture {};

TEST_F(UIImageTest, DecodesWhatOtherToolsWrite) {
    QImage source(4, 2, QImage::Format_ARGB32);
    source.fill(0xFF808080);
    source.setPixel(3, 1, 0xFF000000);
    const struct {
        const char* name;
        const char* format;
        QImage::Format pixels;
    } rows[] = {{"indexed", "png", QImage::Format_Indexed8},
                {"grey", "png", QImage::Format_Grayscale8},
                {"one bit", "png", QImage::Format_Mono},
                {"16 bits", "png", QImage::Format_RGBA64},
                {"16-bit grey", "png", QImage::Format_Grayscale16},
                {"grey jpeg", "jpeg", QImage::Format_Grayscale8}};
    for (const auto& [name, format, pixels] : rows) {
        const QImage converted = source.convertToFormat(pixels, Qt::ThresholdDither);
        const auto image = UIImage::fromData(encoded(converted, format));
        ASSERT_TRUE(image) << name;
        EXPECT_EQ(image->width(), 4) << name;
        const QImage again = converted.convertToFormat(QImage::Format_ARGB32);
        for (const auto& [x, y] : {std::pair{0, 0}, {3, 1}})
            EXPECT_NEAR(qGreen(again.pixel(x, y)), qGreen(image->toQImage().pixel(x, y)), 2) << name;
    }
    QImage clear(1, 1, QImage::Format_RGBA64);
    clear.fill(QColor(255, 0, 0, 1));
    EXPECT_EQ(UIImage::fromData(encoded(clear, "png"))->bitmap()->pixels[0], 0x01FF0000u);
}

TEST_F(UIImageTest, GivesNoneForWhatIsCutShortOrTooLargeOrNoImage) {
    const UIImage picture = noise(64, 64);
    const std::string gif("GIF89a\2\0\1\0\x80\0\0\xFF\0\0\0\0\0!\xFE\2hi\0,\0\0\0\0\2\0\1\0\0\2\2D\n\0;", 41);
    const Data files[] = {*picture.pngData(), *picture.jpegData(0.9), Data(gif)};
    for (const Data& file : files) {
        EXPECT_TRUE(UIImage::fromData(file));
        for (const std::size_t size :
             {file.size() / 4, file.size() / 2, file.size() * 9 / 10, file.size() - 14})
            EXPECT_FALSE(UIImage::fromData(Data(file.raw().substr(0, size))))
                << file.raw().substr(0, 4) << size;
    }
    const Data vast = encoded(QImage(40000, 1000, QImage::Format_Mono), "png");
    EXPECT_FALSE(UIImage::fromData(vast));
    std::string header = files[0].raw();
    header.replace(16, 8, "\x7F\xFF\xFF\xFF\x7F\xFF\xFF\xFF", 8);
    for (const std::string& bytes :
         {std::string(), std::string("GIF89a"), std::string(100, '\xFF'), header,
          std::string("/* XPM */ static char*a[]={\"1 1 1 1\",\"a c red\",\"a\"};")})
        EXPECT_FALSE(UIImage::fromData(Data(bytes)));
}

TEST_F(UIImageTest, ViewsAPhotographAsItsEXIFSays) {
    const char* const views[] = {"rgbw", "grwb", "wbgr", "bwrg", "rbgw", "brwg", "wgbr", "gwrb"};
    const std::string file = quadrants(32, 16).jpegData(1)->raw();
    for (int exif = 1; exif <= 8; ++exif) {
        std::string segment(
            "\xFF\xE1\0\x22"
            "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\0\0\0\0\0\0\0",
            36);
        segment[29] = static_cast<char>(exif);
        const auto image = UIImage::fromData(Data(file.substr(0, 2) + segment + file.substr(2)));
        ASSERT_TRUE(image);
        EXPECT_EQ(quadrantsOf(image->toQImage()), views[exif - 1]) << exif;
        EXPECT_EQ(image->width(), exif < 5 ? 32 : 16);
        EXPECT_EQ(quadrantsOf(QImage::fromData(QByteArray::fromStdString(image->pngData()->raw()))),
                  views[exif - 1]);
    }
}

TEST_F(UIImageTest, FilesKeepWhatTheyShould) {
    Bitmap clear{2, 2, {0x01FF0000, 0x80123456, 0xFF010203, 0x00FFFFFF}};
    EXPECT_EQ(*UIImage::fromData(*UIImage(clear).pngData())->bitmap(), clear);
    const UIImage picture = noise(33, 17);
    EXPECT_EQ(*UIImage::fromData(*picture.pngData())->bitmap(), *picture.bitmap());

    Bitmap edge{16, 1, {}};  // red beside blue: a JPEG of half the colours would mix them
    for (int x = 0; x < 16; ++x) edge.pixels.push_back(x % 2 ? 0xFFFF0000 : 0xFF0000FF);
    const auto decoded = UIImage::fromData(*UIImage(edge).jpegData(1));
    EXPECT_NEAR(decoded->bitmap()->pixels[1] >> 16 & 0xFF, 255, 4);
    EXPECT_NEAR(UIImage::fromData(*plain(8, 8, 0x00123456).jpegData(1))->bitmap()->pixels[9] & 0xFF, 255, 1);
    EXPECT_FALSE(plain(70000, 1).jpegData(1));
    EXPECT_FALSE(UIImage().pngData() || UIImage().jpegData(1));
    EXPECT_EQ(UIImage({2, 2, {1}}).bitmap(), nullptr);
}

TEST_F(UIImageTest, RecoloursWhatIsViewed) {
    const UIImage turned({2, 1, {0xFF000000, 0x00FFFFFF}}, 2, Orientation::right);
    const UIImage filled = turned.fillAlpha({1, 0, 0});
    EXPECT_EQ(*filled.bitmap(), (Bitmap{1, 2, {0xFFFF0000, 0x00FF0000}}));
    EXPECT_EQ(filled.scale(), 2);
    EXPECT_EQ(plain(1, 1, 0xFF808080).tint({1, 0, 0}).bitmap()->pixels[0], 0xFFFF4A4Au);
    EXPECT_EQ(turned.tint(UIColor::patternImage(nullptr)).bitmap(), turned.bitmap());
    EXPECT_EQ(UIImage().tint({1, 0, 0}).bitmap(), nullptr);
}

TEST_F(UIImageTest, ResizesOnceByHowManyTimesItIsTooLarge) {
    const UIImage picture = noise(400, 200);
    const double size = static_cast<double>(picture.pngData()->size()) / 1024;
    const struct {
        const char* name;
        double target;
        int width, height;
    } rows[] = {{"a quarter", size / 4, 100, 50}, {"as large", size, 400, 200},
                {"a seventh", size / 7, 58, 29},  {"at least a pixel", 0.001, 1, 1},
                {"no size", 0, 400, 200},         {"less than none", -3, 400, 200}};
    for (const auto& row : rows)
        picture.resizeImage(row.target, [&](const UIImage& image) {
            EXPECT_EQ(image.bitmap()->width, row.width) << row.name;
            EXPECT_EQ(image.bitmap()->height, row.height) << row.name;
        });
    bool called = false;
    UIImage().resizeImage(1, [&](const UIImage&) { called = true; });
    UIImage().convertToBase64([&](const std::string&) { called = true; });
    EXPECT_FALSE(called);

    Bitmap board{512, 512, {}};  // of single pixels: whoever skips some sees black or white
    for (int i = 0; i < 512 * 512; ++i) board.pixels.push_back((i ^ i >> 9) & 1 ? 0xFFFFFFFF : 0xFF000000);
    const UIImage fine(board, 2);
    fine.resizeImage(static_cast<double>(fine.pngData()->size()) / 1024 / 8, [](const UIImage& image) {
        EXPECT_EQ(image.bitmap()->width, 32);
        EXPECT_EQ(image.scale(), 1);
        for (const std::uint32_t pixel : image.bitmap()->pixels) ASSERT_NEAR(pixel & 0xFF, 127, 8);
    });
    picture.convertToBase64([&](const std::string& text) {
        EXPECT_EQ(*UIImage::fromData(*Base64::decode(text))->bitmap(), *picture.bitmap());
    });
}

TEST_F(UIImageTest, OrientationIsFixedByDeviceAndCamera) {
    using Device = ScreenEnvironment::Orientation;
    const UIImage picture({1, 1, {0}}, 3, Orientation::rightMirrored);
    const struct {
        Device device;
        int front, other;  // the platform's numbers
    } rows[] = {
        {Device::unknown, 7, 7},       {Device::portrait, 6, 7},       {Device::portraitUpsideDown, 2, 2},
        {Device::landscapeLeft, 1, 0}, {Device::landscapeRight, 0, 1}, {Device::faceUp, 7, 7}};
    for (const auto& [device, front, other] : rows) {
        ScreenEnvironment::orientation = device;
        EXPECT_EQ(static_cast<int>(picture.fixedOrientation(true)->orientation()), front);
        EXPECT_EQ(static_cast<int>(picture.fixedOrientation(false)->orientation()), other);
        EXPECT_EQ(static_cast<int>(picture.fixedOrientation({})->orientation()), other);
        EXPECT_EQ(picture.fixedOrientation(true)->scale(), 3);
        EXPECT_FALSE(UIImage().fixedOrientation(true));
    }
}

TEST_F(UIImageTest, IsFoundByNameInTheMainBundleThenTheOtherThenTheLibrary) {
    const std::string set = "Media.xcassets/card.imageset/";
    addResource(set + "Contents.json",
                R"({"images":[{"idiom":"universal","filename":"c.png","scale":"2x"}]})");
    addResource(set + "c.png", plain(20, 10).pngData()->raw());
    addResource("logo.png", plain(1, 1).pngData()->raw());
    addResource("logo@2x.png", plain(4, 4).pngData()->raw());
    addResource("photo.jpg", plain(3, 3).jpegData(1)->raw());
    addResource("broken.png", "no image");
    addResource("other/broken.png", plain(5, 5).pngData()->raw());
    const Bundle other = *Bundle::at(directory() / "other");
    const struct {
        const char* name;
        double screen, width, scale;
    } rows[] = {{"card", 1, 10, 2},     {"logo", 1, 1, 1},   {"logo", 2, 2, 2},     {"logo", 3, 2, 2},
                {"photo.jpg", 1, 3, 1}, {"broken", 1, 5, 1}, {"unknown", 1, 96, 1}, {"unknown", 2, 96, 2},
                {"../logo", 1, 96, 1},  {"", 1, 96, 1}};
    for (const auto& row : rows) {
        ScreenEnvironment::scale = row.screen;
        const UIImage image = UIImage::initImage(row.name, other);
        EXPECT_EQ(image.width(), row.width) << row.name;
        EXPECT_EQ(image.scale(), row.scale) << row.name;
    }
    Bundle::setLibrary(directory());
    EXPECT_DEATH(UIImage::initImage("unknown", other), "has no image \"noImage\"");
}

TEST_F(UIImageTest, ViewsShowWhatTheyAreGiven) {
    QLabel view;
    const auto width = [&] { return view.pixmap().width(); };
    loadImage(view, "unknown", Bundle::main());
    EXPECT_EQ(width(), 96);
    setImage(view, plain(8, 4, 0xFF112233, 2));
    EXPECT_EQ(view.sizeHint(), QSize(4, 2));
    std::string text;
    plain(3, 3).convertToBase64([&](const std::string& base64) { text = base64; });
    loadImageFromBase64(view, text.insert(5, " \n-"));
    EXPECT_EQ(width(), 3);
    loadImageFromBase64(view, "abc");
    EXPECT_EQ(width(), 3);
    loadImageFromBase64(view, "YWJj");
    EXPECT_TRUE(view.pixmap().isNull());
    loadImageFromData(view, *plain(6, 6).pngData());
    EXPECT_EQ(width(), 6);
}

TEST_F(UIImageTest, DocumentsKeepAnImageUnderItsName) {
    const auto width = [](std::string_view name) {
        const auto image = Utils::readImageFileFromDocumentDirectory(name);
        return image ? image->width() : 0;
    };
    const auto write = [](std::string_view name, const UIImage& image) {
        return logOf([&] { Utils::writeImageFileToDocumentDirectory(name, image); });
    };
    EXPECT_EQ(width("id card"), 0);
    EXPECT_EQ(write("id card", plain(5, 5)), "");
    EXPECT_EQ(write("id card", plain(9, 9)), "");
    EXPECT_EQ(width("id card"), 9);
    EXPECT_EQ(write("id card", UIImage()) + write("id card", plain(70000, 1)), "");
    EXPECT_EQ(width("id card"), 9);
    EXPECT_EQ(write("../id card", plain(1, 1)), "");
    std::filesystem::create_directories(UserDirectories::documents() / "taken" / "by");
    const std::string log = write("taken", plain(1, 1));
    EXPECT_NE(log.find("DEBUG[Utils]"), log.npos);
    EXPECT_NE(log.find("Directory not empty"), log.npos);
    EXPECT_NE(log.find("Is a directory"), log.npos);
}

}  // namespace
}  // namespace torvel
