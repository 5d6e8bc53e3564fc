#include "TorvelPlatform/uikit/qt/UITabBarController.h"

#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/uikit/qt/ScreenStack.h"

#include <QHBoxLayout>
#include <QImage>
#include <QPixmap>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace torvel {

struct UITabBarController::Parts {
    ScreenStack* screens;
    QHBoxLayout* bar;
    std::vector<QToolButton*> buttons;

    // As many buttons as there are screens.
    void makeButtons(std::size_t count, const std::function<void(std::size_t)>& select);
};

void UITabBarController::Parts::makeButtons(std::size_t count,
                                            const std::function<void(std::size_t)>& select) {
    for (; buttons.size() > count; buttons.pop_back()) {
        buttons.back()->setParent(nullptr);
        buttons.back()->deleteLater();  // it may be what was clicked
    }
    for (std::size_t i = buttons.size(); i < count; ++i) {
        auto* const button = new QToolButton;
        button->setObjectName("tabBarButton");
        button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
        button->setIconSize({24, 24});
        button->setAutoRaise(true);
        button->setCheckable(true);
        QObject::connect(button, &QToolButton::clicked, button, [select, i] { select(i); });
        bar->addWidget(button, 1);
        buttons.push_back(button);
    }
}

UITabBarController::UITabBarController() = default;

UITabBarController::~UITabBarController() = default;

void UITabBarController::setViewControllers(std::vector<std::shared_ptr<UIViewController>> controllers) {
    m_selected = nullptr;
    while (!children().empty()) children().back()->removeFromParent();
    for (auto& controller : controllers) addChild(std::move(controller));
    setSelectedIndex(0);
}

std::optional<std::size_t> UITabBarController::selectedIndex() const {
    for (std::size_t i = 0; i < children().size(); ++i)
        if (children()[i].get() == m_selected) return i;
    return std::nullopt;
}

void UITabBarController::setSelectedIndex(std::optional<std::size_t> index) {
    expectMainThread("UIViewController");
    m_selected = index && *index < children().size() ? children()[*index].get() : nullptr;
    if (isViewLoaded()) showSelected();
}

void UITabBarController::updateTheme() {
    const auto screens = children();  // a screen may change them
    for (const auto& screen : screens) screen->updateTheme();
}

UIView* UITabBarController::loadView() {
    auto* const view = new QWidget;
    auto* const bar = new QWidget(view);
    bar->setObjectName("tabBar");
    bar->setAttribute(Qt::WA_StyledBackground);
    m_parts.reset(new Parts{new ScreenStack, new QHBoxLayout(bar), {}});
    m_parts->bar->setContentsMargins({});
    m_parts->bar->setSpacing(0);
    auto* const column = new QVBoxLayout(view);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(m_parts->screens, 1);
    column->addWidget(bar);
    showSelected();
    return view;
}

void UITabBarController::childrenDidChange() {
    if (!selectedIndex()) m_selected = nullptr;
    if (isViewLoaded()) showSelected();
}

// A screen may select another one while its view is loaded, or have the screens replaced, itself too.
void UITabBarController::showSelected() {
    while (m_selected != nullptr && !m_selected->isViewLoaded()) {
        const std::shared_ptr<UIViewController> selected = children()[*selectedIndex()];
        selected->view();
    }
    m_parts->screens->show(m_selected, children());
    showBar();
}

void UITabBarController::showBar() {
    m_parts->makeButtons(children().size(), [this](std::size_t index) { setSelectedIndex(index); });
    for (std::size_t i = 0; i < children().size(); ++i) {
        const UIBarItem& item = children()[i]->tabBarItem();
        QToolButton& button = *m_parts->buttons[i];
        button.setText(QString::fromStdString(item.title()));
        button.setIcon(item.image() ? QPixmap::fromImage(item.image()->toQImage()) : QPixmap());
        button.setChecked(children()[i].get() == m_selected);
    }
}

}  // namespace torvel
