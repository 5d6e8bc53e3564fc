#include "TorvelLibrary/Utils/ColorUtils.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/Utils/FontCache.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/UserStorageHelper.h"
#include "TorvelLibrary/navigation/AppRouter.h"
#include "TorvelLibrary/preflight/Preflight.h"
#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"
#include "TorvelPlatform/uikit/qt/QtHost.h"
#include "TorvelPlatform/uikit/qt/TextMeasure.h"
#include "TorvelPlatform/uikit/qt/UIApplication.h"
#include "TorvelPlatform/uikit/qt/UIImageView.h"
#include "TorvelPlatform/uikit/qt/UINavigationController.h"
#include "TorvelPlatform/uikit/qt/UITabBarController.h"
#include "TorvelPlatform/uikit/qt/UITextField.h"

#include <QCoreApplication>
#include <QLabel>
#include <QLineEdit>
#include <thread>

#include <gtest/gtest.h>

namespace torvel {
namespace {

TEST(QtHost, LendsTheScreenItsWidthAndTheMainQueueItsLoop) {
    connectToQt();
    EXPECT_EQ(dp(375), 800);  // the width of the test screen

    std::string order;
    DispatchQueue::main().async([&] {
        order += "1";
        DispatchQueue::main().async([&] {
            order += "3";
            QCoreApplication::quit();
        });
    });
    DispatchQueue::main().async([&] { order += "2"; });
    QCoreApplication::exec();
    EXPECT_EQ(order, "123");
}

#ifndef NDEBUG
TEST(MainThread, WhatIsForItAloneSaysSoInDebugBuilds) {
    const auto tabs = std::make_shared<UITabBarController>();
    UINavigationController navigation(tabs);
    QLabel image;
    QLineEdit field;
    const UIFont font = systemFontOfSize(10);
    const struct {
        const char* what;
        std::function<void()> use;
    } rows[] = {
        {"AppRouter", [] { AppRouter::sharedInstance(); }},
        {"ColorUtils", [] { ColorUtils::sharedInstance(); }},
        {"FontCache", [] { FontCache::getLightTitleFont(); }},
        {"LocaleHelper::doTheSwizzling()", [] { LocaleHelper::doTheSwizzling(); }},
        {"Preflight", [] { Preflight::examine(Bundle::main(), {}); }},
        {"UserStorageHelper::initialSetup()", [] { UserStorageHelper::initialSetup({}); }},
        {"connectToQt()", [] { connectToQt(); }},
        {"registerFont()", [] { registerFont(""); }},
        {"fontWithName()", [] { fontWithName("", 10); }},
        {"systemFontOfSize()", [] { systemFontOfSize(10); }},
        {"toQFont()", [&] { toQFont(font); }},
        {"boundingSize()", [&] { boundingSize("text", font); }},
        {"UINib", [] { UINib("", Bundle::main()).instantiate(); }},
        {"UINib", [] { UINib::registerView("", [] { return nullptr; }); }},
        {"UIImageView", [&] { setImage(image, {}); }},
        {"UITextField", [&] { getRawValue(field); }},
        {"UITextField", [&] { setPrepopulatedText(field, "text"); }},
        {"UIApplication", [&] { UIApplication::getTopViewController(&navigation); }},
        {"UIViewController", [&] { navigation.view(); }},
        {"UIViewController", [&] { navigation.pushViewController(std::make_shared<UIViewController>()); }},
        {"UIViewController", [&] { navigation.setNavigationBarHidden(true); }},
        {"UIViewController", [&] { tabs->setSelectedIndex(0); }},
        {"UIViewController", [&] { tabs->removeFromParent(); }},
        {"UIViewController", [&] { tabs->navigationItem().setTitle("text"); }},
    };
    // The report ends the operation, before it does harm.
    setDiagnosticSink(
        [](std::string_view message, const std::source_location&) { throw std::string(message); });
    for (const auto& row : rows) {
        std::string said;
        std::thread([&] {
            try {
                row.use();
            } catch (const std::string& message) {
                said = message;
            }
        }).join();
        EXPECT_EQ(said, std::string(row.what) + " is for the main thread alone");
    }
}
#endif

}  // namespace
}  // namespace torvel
