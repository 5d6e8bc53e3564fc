#include "gallery/Gallery.h"
#include "gallery/Shots.h"
#include "gallery/Window.h"

#include <QApplication>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>

namespace {

using namespace torvel::gallery;
namespace fs = std::filesystem;

constexpr char help[] =
    "Usage: torvel-gallery [--shot DIR] [--help]\n"
    "\n"
    "A wallet in a phone, built on the public interfaces of Torvel, with panes for developers around it:\n"
    "theme, type, fonts, images, amounts, routes, network, store and log. Its backend runs inside the "
    "program.\n"
    "\n"
    "  --shot DIR  write every screen as a PNG file into DIR and end; needs no display\n"
    "  --help      show this\n";

// Pictures depend on nothing of the machine's or the user's: folders and fonts of their own.
class CleanRoom {
  public:
    CleanRoom() {
        std::string name = (fs::temp_directory_path() / "torvel-shots-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) return;
        m_folder = name;
        std::ofstream(m_folder / "fonts.conf")
            << R"(<?xml version="1.0"?><!DOCTYPE fontconfig SYSTEM "urn:fontconfig:fonts.dtd"><fontconfig>)"
            << "<dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>" << name
            << "/cache</cachedir></fontconfig>";
        ::setenv("FONTCONFIG_FILE", (m_folder / "fonts.conf").c_str(), 1);
        ::setenv("XDG_DATA_HOME", (m_folder / "data").c_str(), 1);
        ::setenv("XDG_STATE_HOME", (m_folder / "state").c_str(), 1);
        ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
        ::setenv("TZ", "UTC", 1);
        ::setenv("LC_ALL", "en_US.UTF-8", 1);
        if (std::freopen("/dev/null", "w", stdout) == nullptr) return;  // what is logged is on a picture
    }
    ~CleanRoom() {
        std::error_code failed;
        if (!m_folder.empty()) fs::remove_all(m_folder, failed);
    }

  private:
    fs::path m_folder;
};

void writeUsefulMessages(QtMsgType, const QMessageLogContext&, const QString& message) {
    const bool isUsual = message.contains("propagateSizeHints") || message.contains("XDG_RUNTIME_DIR");
    if (!isUsual) std::cerr << message.toStdString() << "\n";
}

int failed(const std::string& message) {
    std::cerr << "torvel-gallery: " << message << "\n";
    return 1;
}

// The toolkit would abort without one.
bool hasDisplay() {
    return std::getenv("DISPLAY") || std::getenv("WAYLAND_DISPLAY") || std::getenv("QT_QPA_PLATFORM");
}

// An empty folder: no pictures, the window.
int run(int count, char** arguments, const std::string& folder) {
    const auto host = Host::start();
    if (!host) return failed(host.error());
    const QApplication application(count, arguments);
    QApplication::setStyle("Fusion");  // whatever the desktop has
    connectScreen();
    Gallery gallery(*host.value());
    Window window(gallery);
    window.resize(1400, 916);
    window.show();
    if (folder.empty()) return QApplication::exec();
    const auto fault = writeShots(gallery, window, folder);
    return fault ? failed(*fault) : 0;
}

}  // namespace

int main(int count, char** arguments) {
    const std::vector<std::string> words(arguments + 1, arguments + count);
    if (words == std::vector<std::string>{"--help"}) {
        std::cout << help;
        return 0;
    }
    const bool isShot = words.size() == 2 && words.front() == "--shot" && !words.back().empty();
    if (!words.empty() && !isShot) {
        std::cerr << help;
        return 2;
    }
    ::setenv("QT_FONT_DPI", "72", 1);  // a point of the type scale is a pixel of the phone
    qInstallMessageHandler(writeUsefulMessages);
    if (!isShot && !hasDisplay())
        return failed("there is no display; --shot DIR writes pictures without one");
    if (!isShot) return run(count, arguments, {});
    const CleanRoom room;
    return run(count, arguments, words.back());
}
