// A window in the host's theme and fonts, whose texts follow the language in the app. The host's bundle is
// that of the sample host (TORVEL_MAIN_BUNDLE=.../share/torvel-sample).
//   example-Window [--click]     with --click it presses its button once and ends
#include "TorvelLibrary/TorvelLibraryBuilder.h"
#include "TorvelLibrary/Utils/ColorUtils.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"
#include "TorvelPlatform/uikit/qt/QtHost.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

using namespace torvel;

namespace {

QString text(std::string_view key) {
    return QString::fromStdString(getLocalisedValue(key, Bundle::main(), "Localizable"));
}

void dress(QWidget& window, QLabel& title, QPushButton& button) {
    const ColorDAO theme = ColorUtils::sharedInstance().theme.value_or(ColorDAO());
    window.setStyleSheet(QString::fromStdString("QWidget { background: #" + theme.surfaceColor +
                                                " } QLabel { color: #" + theme.primaryColor + " }"));
    title.setText(text("transfer_title"));
    title.setFont(toQFont(FontCache::getBoldHeading20Font()));
    button.setText(text("transfer_button"));
    button.setFont(toQFont(FontCache::getMediumTitle16Font()));
    qInfo("%s: %s", LocaleHelper::currentAppleLanguage().c_str(), qPrintable(title.text()));
}

}  // namespace

int main(int count, char** arguments) {
    QApplication application(count, arguments);
    connectToQt();
    TorvelLibraryBuilder().build();
    LocaleHelper::doTheSwizzling();
    for (const char* face : {"Poppins-Bold", "Poppins-Medium"})
        registerFont(Bundle::main().path(face, "ttf").value_or(""));

    QWidget window;
    QVBoxLayout layout(&window);
    QLabel title;
    QPushButton button;
    layout.addWidget(&title);
    layout.addWidget(&button);
    QObject::connect(&button, &QPushButton::clicked, [&] {
        LocaleHelper::setAppleLanguageTo(LocaleHelper::currentAppleLanguage() == "en" ? "fr" : "en");
        dress(window, title, button);
    });
    dress(window, title, button);
    window.show();
    if (count > 1) QTimer::singleShot(0, [&] { button.click(), QApplication::quit(); });
    return QApplication::exec();
}
