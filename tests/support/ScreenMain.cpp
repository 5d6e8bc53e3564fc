// The main of the tests that have a screen: 800 x 800 points without a display, one pixel a point, and no
// fonts but DejaVu and the test's own faces, so that nothing depends on the machine.
#include <QApplication>

#include <gtest/gtest.h>
#include <stdlib.h>

namespace {

void writeUsefulMessages(QtMsgType, const QMessageLogContext&, const QString& message) {
    const bool isUsual = message.contains("propagateSizeHints") || message.contains("XDG_RUNTIME_DIR");
    if (!isUsual) fprintf(stderr, "%s\n", qPrintable(message));
}

}  // namespace

// The toolkit lets go of a few of fontconfig's patterns without releasing them.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig"; }

int main(int count, char** arguments) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    ::setenv("QT_FONT_DPI", "72", 1);
    ::setenv("FONTCONFIG_FILE", TORVEL_TEST_FONTS, 1);
    ::testing::InitGoogleTest(&count, arguments);
    qInstallMessageHandler(writeUsefulMessages);
    const QApplication application(count, arguments);
    return RUN_ALL_TESTS();
}
