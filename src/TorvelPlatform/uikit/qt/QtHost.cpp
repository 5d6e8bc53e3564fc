#include "TorvelPlatform/uikit/qt/QtHost.h"

#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/uikit/qt/Direction.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>
#include <QSocketNotifier>
#include <QWidget>

namespace torvel {
namespace {

void drainMainQueueFromLoop() {
    auto* const notifier = new QSocketNotifier(DispatchQueue::main().wakeFd(), QSocketNotifier::Read,
                                               QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [] { DispatchQueue::main().drain(); });
}

// A screen that does not turn says none of these, and then nothing is known.
ScreenEnvironment::Orientation orientationOf(const QScreen& screen) {
    switch (screen.orientation()) {
        case Qt::PortraitOrientation:
            return ScreenEnvironment::Orientation::portrait;
        case Qt::InvertedPortraitOrientation:
            return ScreenEnvironment::Orientation::portraitUpsideDown;
        case Qt::InvertedLandscapeOrientation:
            return ScreenEnvironment::Orientation::landscapeLeft;
        case Qt::LandscapeOrientation:
            return ScreenEnvironment::Orientation::landscapeRight;
        default:
            return ScreenEnvironment::Orientation::unknown;
    }
}

void takeScreen() {
    const QScreen* const screen = QGuiApplication::primaryScreen();  // none while all are unplugged
    if (screen == nullptr) return;
    ScreenEnvironment::widthInPoints = screen->geometry().width();
    ScreenEnvironment::scale = screen->devicePixelRatio();
    ScreenEnvironment::orientation = orientationOf(*screen);
}

void followScreen(QScreen* screen) {
    takeScreen();
    if (screen == nullptr) return;
    QObject::connect(screen, &QScreen::geometryChanged, screen, takeScreen);
    QObject::connect(screen, &QScreen::orientationChanged, screen, takeScreen);
}

// Whatever way a view was made, it is polished before it is first shown.
class DirectionFilter final : public QObject {
  public:
    using QObject::QObject;

    bool eventFilter(QObject* object, QEvent* event) override {
        if (event->type() == QEvent::Polish && object->isWidgetType())
            takeDirection(*static_cast<QWidget*>(object));
        return false;
    }
};

}  // namespace

void connectToQt() {
    expectMainThread("connectToQt()");
    qGuiApp->installEventFilter(new DirectionFilter(qGuiApp));
    drainMainQueueFromLoop();
    followScreen(QGuiApplication::primaryScreen());
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, qGuiApp, followScreen);
}

}  // namespace torvel
