#include "TorvelPlatform/uikit/qt/ScreenStack.h"

#include <algorithm>

namespace torvel {

ScreenStack::ScreenStack() { addWidget(new QWidget); }

void ScreenStack::show(UIViewController* screen, const std::vector<std::shared_ptr<UIViewController>>& all) {
    const auto isOf = [](const QWidget* page) {
        return [page](const auto& child) { return child->isViewLoaded() && child->view() == page; };
    };
    for (int i = count() - 1; i > 0; --i)
        if (QWidget* const page = widget(i); std::none_of(all.begin(), all.end(), isOf(page)))
            page->setParent(nullptr);
    if (screen == nullptr) return setCurrentIndex(0);
    if (indexOf(screen->view()) < 0) addWidget(screen->view());
    setCurrentWidget(screen->view());
}

}  // namespace torvel
