#include "TorvelPlatform/uikit/qt/UIViewController.h"

#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/uikit/qt/Direction.h"
#include "TorvelPlatform/uikit/qt/UINavigationController.h"

#include <QPointer>
#include <QWidget>
#include <algorithm>

namespace torvel {

// The view may go with the view that it is in.
struct UIViewController::View {
    QPointer<QWidget> widget;
};

void UIBarItem::setTitle(std::string_view title) {
    m_title = title;
    m_changed();
}

void UIBarItem::setImage(std::optional<UIImage> image) {
    m_image = std::move(image);
    m_changed();
}

UIViewController::UIViewController() : m_view(std::make_unique<View>()) {}

UIViewController::UIViewController(UINib nib) : m_nib(std::move(nib)), m_view(std::make_unique<View>()) {}

UIViewController::~UIViewController() {
    for (const auto& child : m_children) child->m_parent = nullptr;
    if (m_view->widget.isNull()) return;
    // Not at once: what ends the screen may be one of its own buttons. None of them is pressed any more.
    m_view->widget->setEnabled(false);
    m_view->widget->setParent(nullptr);
    m_view->widget->deleteLater();
}

void UIViewController::tellParent() {
    expectMainThread("UIViewController");
    if (m_parent != nullptr) m_parent->childrenDidChange();
}

UIView* UIViewController::view() {
    expectMainThread("UIViewController");
    if (!isViewLoaded()) {
        m_view->widget = loadView();
        takeDirection(*m_view->widget);
        viewDidLoad();
    }
    return m_view->widget;
}

bool UIViewController::isViewLoaded() const { return !m_view->widget.isNull(); }

UIView* UIViewController::loadView() {
    std::unique_ptr<UIView> view = m_nib ? m_nib->instantiate() : nullptr;
    return view ? view.release() : new QWidget;
}

UIBarItem& UIViewController::navItem() {
    if (m_parent == nullptr) return m_navigationItem;
    UIViewController* current = m_parent;
    while (current->m_parent != nullptr && current->m_parent->navigationController() != nullptr)
        current = current->m_parent;
    return current->m_navigationItem;
}

void UIViewController::addChild(std::shared_ptr<UIViewController> child) {
    expectMainThread("UIViewController");
    if (!child) fatalError("A view controller cannot contain nothing.");
    for (const UIViewController* above = this; above != nullptr; above = above->m_parent)
        if (above == child.get()) fatalError("A view controller cannot contain itself.");
    child->removeFromParent();
    child->m_parent = this;
    m_children.push_back(std::move(child));
    childrenDidChange();
}

void UIViewController::removeFromParent() {
    expectMainThread("UIViewController");
    UIViewController* const parent = m_parent;
    if (parent == nullptr) return;
    m_parent = nullptr;
    const auto own = std::find_if(parent->m_children.begin(), parent->m_children.end(),
                                  [this](const auto& child) { return child.get() == this; });
    const std::shared_ptr<UIViewController> keepsThis = *own;
    parent->m_children.erase(own);
    parent->childrenDidChange();
}

UINavigationController* UIViewController::navigationController() const {
    for (UIViewController* above = m_parent; above != nullptr; above = above->m_parent)
        if (auto* const navigation = dynamic_cast<UINavigationController*>(above)) return navigation;
    return nullptr;
}

}  // namespace torvel
