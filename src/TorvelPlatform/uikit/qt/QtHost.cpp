#include "TorvelPlatform/uikit/qt/QtHost.h"

#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"

#include <QGuiApplication>
#include <QScreen>
#include <QSocketNotifier>

namespace torvel {
namespace {

void drainMainQueueFromLoop() {
    auto* const notifier = new QSocketNotifier(DispatchQueue::main().wakeFd(), QSocketNotifier::Read,
                                               QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [] { DispatchQueue::main().drain(); });
}

void takeWidth() {
    const QScreen* const screen = QGuiApplication::primaryScreen();  // none while all are unplugged
    if (screen != nullptr) ScreenEnvironment::widthInPoints = screen->geometry().width();
}

void followScreen(QScreen* screen) {
    takeWidth();
    if (screen != nullptr) QObject::connect(screen, &QScreen::geometryChanged, screen, takeWidth);
}

}  // namespace

void connectToQt() {
    drainMainQueueFromLoop();
    followScreen(QGuiApplication::primaryScreen());
    QObject::connect(qGuiApp, &QGuiApplication::primaryScreenChanged, qGuiApp, followScreen);
}

}  // namespace torvel
