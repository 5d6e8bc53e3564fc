#include "TorvelPlatform/uikit/qt/Direction.h"

#include "TorvelPlatform/foundation/ScreenEnvironment.h"

#include <QVariant>
#include <QWidget>

namespace torvel {
namespace {

constexpr const char* mark = "torvelDirection";

// The view itself or the ancestor whose direction it has; nullptr when none has one of its own.
const QWidget* decisiveView(const QWidget& view) {
    const QWidget* decisive = &view;
    while (decisive && !decisive->testAttribute(Qt::WA_SetLayoutDirection))
        decisive = decisive->parentWidget();
    return decisive;
}

}  // namespace

void takeDirection(QWidget& view) {
    const bool isMirrored = ScreenEnvironment::direction == ScreenEnvironment::Direction::rightToLeft;
    const Qt::LayoutDirection direction = isMirrored ? Qt::RightToLeft : Qt::LeftToRight;
    if (const QWidget* const decisive = decisiveView(view)) {
        const QVariant taken = decisive->property(mark);
        const bool isOurs = taken.isValid() && taken.toInt() == decisive->layoutDirection();
        if (!isOurs || decisive == &view || decisive->layoutDirection() == direction) return;
    }
    view.setLayoutDirection(direction);
    view.setProperty(mark, static_cast<int>(direction));
}

}  // namespace torvel
