#include "TorvelPlatform/uikit/qt/UIApplication.h"

#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/uikit/qt/UINavigationController.h"
#include "TorvelPlatform/uikit/qt/UITabBarController.h"

namespace torvel {

UIViewController* UIApplication::getTopViewController(UIViewController* base) {
    expectMainThread("UIApplication");
    if (auto* const navigation = dynamic_cast<UINavigationController*>(base))
        return getTopViewController(navigation->visibleViewController());
    if (auto* const tabs = dynamic_cast<UITabBarController*>(base))
        if (UIViewController* const selected = tabs->selectedViewController())
            return getTopViewController(selected);
    return base;
}

}  // namespace torvel
