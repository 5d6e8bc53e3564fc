#pragma once

#include "gallery/kit/Style.h"

#include <QRectF>
#include <QWidget>

class QPainter;

namespace torvel::gallery {

enum class Icon {
    none,
    home,
    send,
    card,
    list,
    gear,
    lock,
    unlock,
    check,
    cross,
    globe,
    moon,
    sun,
    palette,
    type,
    font,
    image,
    coins,
    route,
    network,
    store,
    log,
    back,
    forward,
    trash,
    wallet,
    inbox,
    key,
    plus,
};

// Draws an icon in lines of one colour. Those that point somewhere point the other way where the painter's
// widget is mirrored.
void drawIcon(QPainter& painter, Icon icon, const QRectF& box, const QColor& ink, bool mirrored = false);

// An icon on a tile of a quiet colour.
class IconTile final : public QWidget {
  public:
    IconTile(Icon icon, Role ink, Role tile, int size = 40);

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    Icon m_icon;
    Role m_ink, m_tile;
};

}  // namespace torvel::gallery
