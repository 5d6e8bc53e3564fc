// A window and the end at its first painting: with STARTUP_TORVEL a host's, whose label and colours come from
// the library.
#include <QApplication>
#include <QLabel>
#include <QVBoxLayout>

#include <unistd.h>

#ifdef STARTUP_TORVEL
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/ColorUtils.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#endif

namespace {

class Window : public QWidget {
    void paintEvent(QPaintEvent*) override {
        QMetaObject::invokeMethod(
            this, [] { _exit(0); }, Qt::QueuedConnection);
    }
};

QString title() {
#ifdef STARTUP_TORVEL
    using namespace torvel;
    TorvelLibraryBuilder().setServerURL("https://api.example.com/v1/").build();
    LocaleHelper::doTheSwizzling();
    if (!ColorUtils::sharedInstance().theme || FontCache::getLightTitleFont().pointSize() <= 0) _exit(1);
    return QString::fromStdString(getLocalisedValue("greeting", Bundle::main(), "Localizable"));
#else
    return "Hello";
#endif
}

}  // namespace

int main(int count, char** arguments) {
    const QApplication application(count, arguments);
    Window window;
    QVBoxLayout layout(&window);
    QLabel label(title());
    layout.addWidget(&label);
    window.show();
    return QApplication::exec();
}
