#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/uikit/qt/QtHost.h"

#include <QCoreApplication>

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

}  // namespace
}  // namespace torvel
