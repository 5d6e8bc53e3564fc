#pragma once  // internal

#include "TorvelPlatform/uikit/qt/UIViewController.h"

#include <QStackedWidget>

namespace torvel {

// Where a container shows one of its screens, or an empty page.
class ScreenStack final : public QStackedWidget {
  public:
    ScreenStack();

    // Shows one of the container's screens, or none, and lets go of the views that are not the container's
    // any more.
    void show(UIViewController* screen, const std::vector<std::shared_ptr<UIViewController>>& all);
};

}  // namespace torvel
