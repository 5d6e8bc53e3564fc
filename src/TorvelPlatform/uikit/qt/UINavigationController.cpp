#include "TorvelPlatform/uikit/qt/UINavigationController.h"

#include "TorvelPlatform/foundation/MainThread.h"
#include "TorvelPlatform/uikit/qt/ScreenStack.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace torvel {
namespace {

constexpr int barHeight = 44;

// A chevron to where the reader came from, in the bar's colour of text.
class BackButton final : public QAbstractButton {
  public:
    explicit BackButton(QWidget* parent) : QAbstractButton(parent) {
        setObjectName("navigationBack");
        setCursor(Qt::PointingHandCursor);
        setFixedSize(barHeight, barHeight);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(rect().center());
        if (layoutDirection() == Qt::RightToLeft) painter.scale(-1, 1);
        QColor color = palette().color(foregroundRole());
        if (isDown()) color.setAlphaF(0.5f);
        painter.setPen(QPen(color, 2.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        const QPointF chevron[] = {{4, -8}, {-4, 0}, {4, 8}};
        painter.drawPolyline(chevron, 3);
    }
};

}  // namespace

struct UINavigationController::Parts {
    QWidget* bar;
    QAbstractButton* back;
    QLabel* title;
    ScreenStack* screens;
};

UINavigationController::UINavigationController(std::shared_ptr<UIViewController> root) {
    if (root) addChild(std::move(root));
}

UINavigationController::~UINavigationController() = default;

void UINavigationController::pushViewController(std::shared_ptr<UIViewController> controller) {
    addChild(std::move(controller));
}

std::shared_ptr<UIViewController> UINavigationController::popViewController() {
    if (children().size() < 2) return nullptr;
    std::shared_ptr<UIViewController> top = children().back();
    top->removeFromParent();
    return top;
}

void UINavigationController::popToRootViewController() {
    while (popViewController()) {
    }
}

UIViewController* UINavigationController::visibleViewController() const {
    return children().empty() ? nullptr : children().back().get();
}

void UINavigationController::setNavigationBarHidden(bool hidden) {
    expectMainThread("UIViewController");
    m_barHidden = hidden;
    if (isViewLoaded()) showBar();
}

void UINavigationController::updateTheme() {
    const auto screens = children();  // a screen may change them
    for (const auto& screen : screens) screen->updateTheme();
}

UIView* UINavigationController::loadView() {
    auto* const view = new QWidget;
    auto* const bar = new QWidget(view);
    m_parts.reset(new Parts{bar, new BackButton(bar), new QLabel(bar), new ScreenStack});
    bar->setObjectName("navigationBar");
    bar->setAttribute(Qt::WA_StyledBackground);
    bar->setFixedHeight(barHeight);
    m_parts->title->setObjectName("navigationTitle");
    m_parts->title->setAlignment(Qt::AlignCenter);
    QObject::connect(m_parts->back, &QAbstractButton::clicked, bar, [this] { popViewController(); });

    // The title stands in the middle of the bar, whether there is a way back or not.
    auto* const row = new QGridLayout(bar);
    row->setContentsMargins({});
    row->addWidget(m_parts->title, 0, 0);
    row->addWidget(m_parts->back, 0, 0, Qt::AlignLeading);
    m_parts->title->setContentsMargins(barHeight, 0, barHeight, 0);
    auto* const column = new QVBoxLayout(view);
    column->setContentsMargins({});
    column->setSpacing(0);
    column->addWidget(bar);
    column->addWidget(m_parts->screens, 1);
    showTop();
    return view;
}

void UINavigationController::childrenDidChange() {
    if (isViewLoaded()) showTop();
}

// A screen may push another one while its view is loaded, or take itself off, together with its last owner.
void UINavigationController::showTop() {
    while (visibleViewController() != nullptr && !visibleViewController()->isViewLoaded()) {
        const std::shared_ptr<UIViewController> top = children().back();
        top->view();
    }
    m_parts->screens->show(visibleViewController(), children());
    showBar();
}

void UINavigationController::showBar() {
    UIViewController* const top = visibleViewController();
    m_parts->title->setText(top ? QString::fromStdString(top->navigationItem().title()) : QString());
    const std::size_t count = children().size();
    m_parts->back->setVisible(count > 1);
    if (count > 1)  // what a screen reader says of the arrow
        m_parts->back->setAccessibleName(
            QString::fromStdString(children()[count - 2]->navigationItem().title()));
    m_parts->bar->setVisible(!m_barHidden);
}

}  // namespace torvel
