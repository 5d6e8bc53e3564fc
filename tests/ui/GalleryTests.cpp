#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelTesting/TemporaryHost.h"
#include "gallery/Gallery.h"
#include "gallery/Window.h"
#include "gallery/phone/Phone.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolButton>

#include <gtest/gtest.h>

namespace torvel::gallery {
namespace {

// The gallery as its user has it.
struct GalleryTest : ::testing::Test {
    GalleryTest() {
        connectScreen();
        gallery->setLanguage("en");
        window = std::make_unique<Window>(*gallery);
        window->show();
        settle();
    }

    template <class Widget>
    Widget& find(const char* name) {
        auto* const found = window->phone().findChild<Widget*>(name);
        if (!found) throw std::runtime_error(std::string("there is no ") + name);
        return *found;
    }
    void type(const char* field, const char* text) {
        find<QLineEdit>(field).clear();
        QTest::keyClicks(&find<QLineEdit>(field), text);
    }
    void click(const char* button) {
        QTest::mouseClick(&find<QAbstractButton>(button), Qt::LeftButton);
        settle();
    }
    void openTab(Tab tab) {
        QTest::mouseClick(window->phone().findChildren<QToolButton*>("tabBarButton").at(int(tab)),
                          Qt::LeftButton);
        settle();
    }
    void logIn() {
        type("login_number", sandbox::walletNumber);
        type("login_pin", sandbox::walletPin);
        click("login_button");
    }
    // Until the answers are there and what follows from them is shown.
    void settle() {
        const auto isDone = [this] { return !gallery->wallet.isBusy(); };
        ASSERT_TRUE(DispatchQueue::main().runUntil(isDone, std::chrono::seconds(30)));
        DispatchQueue::main().drain();
        QApplication::processEvents();
    }
    // Whether the phone shows a text, its marks of direction aside.
    bool shows(QString text) {
        for (const QLabel* const label : window->phone().findChildren<QLabel*>())
            if (label->isVisible() && label->text().remove(QChar(0x200F)) == text) return true;
        return false;
    }

    const testing::TemporaryHost folders;
    std::unique_ptr<Host> host = std::move(Host::start()).value();
    std::unique_ptr<Gallery> gallery = std::make_unique<Gallery>(*host);
    std::unique_ptr<Window> window;
};

TEST_F(GalleryTest, ChecksAsTheUserTypesAndSendsMoneySealed) {
    type("login_number", "0812345678");
    EXPECT_TRUE(shows("Ten digits that begin with 07"));
    EXPECT_FALSE(find<QAbstractButton>("login_button").isEnabled());
    logIn();
    EXPECT_TRUE(shows("Hello Amina"));
    EXPECT_TRUE(shows("1,000.00 €"));

    openTab(Tab::card);
    const struct {
        const char *typed, *said;
    } rows[] = {{"4", "Visa, go on typing"},
                {"4111 1111 1111 1111", "Visa, the check digit is right"},
                {"4111 1111 1111 1112", "This card number is not valid"},
                {"378282246310005", "American Express, the check digit is right"}};
    for (const auto& row : rows) {
        type("card_number", row.typed);
        EXPECT_TRUE(shows(row.said)) << row.typed;
    }

    openTab(Tab::send);
    type("transfer_to", "0700000002");
    type("transfer_amount", "12.50");
    click("transfer_button");
    EXPECT_TRUE(shows("Sent, reference TX1"));
    const std::string envelope = gallery->wallet.lastTransfer()->envelope;
    EXPECT_EQ(envelope.find("0700000002"), std::string::npos) << envelope;
    openTab(Tab::home);
    EXPECT_TRUE(shows("987.50 €"));
}

TEST_F(GalleryTest, SwitchesLanguageAndThemeWithoutRestart) {
    logIn();
    openTab(Tab::settings);
    click("language_ar");
    EXPECT_TRUE(shows("الإعدادات"));
    EXPECT_FALSE(shows("Settings"));
    EXPECT_EQ(find<QAbstractButton>("language_ar").layoutDirection(), Qt::RightToLeft);
    const auto tabs = window->phone().findChildren<QToolButton*>("tabBarButton");
    EXPECT_GT(tabs.first()->x(), tabs.last()->x());
    click("theme_dark");
    const QImage dark = window->phone().screen().grab().toImage();
    EXPECT_EQ(dark.pixelColor(386, 400).name(), "#15162a");  // of the dark theme's file
    click("language_fr");
    EXPECT_TRUE(shows("Réglages"));
    EXPECT_EQ(find<QAbstractButton>("language_fr").layoutDirection(), Qt::LeftToRight);
}

TEST_F(GalleryTest, OpensTheWaitingTargetAfterTheLogin) {
    openURL(*gallery, "app://wallet/send?to=0700000002&amount=25.00");
    EXPECT_EQ(gallery->waiting, "/send");
    logIn();
    EXPECT_TRUE(shows("Send money"));
    EXPECT_EQ(find<QLineEdit>("transfer_amount").text(), "25.00");
    EXPECT_EQ(gallery->waiting, "");
}

}  // namespace
}  // namespace torvel::gallery
