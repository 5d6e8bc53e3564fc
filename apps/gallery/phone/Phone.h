#pragma once

#include "gallery/Gallery.h"

#include <QWidget>
#include <memory>

namespace torvel {
class UIViewController;
class UITabBarController;
}  // namespace torvel

namespace torvel::gallery {

// The phone: the wallet's screens in a frame.
class Phone final : public QWidget {
  public:
    explicit Phone(Gallery& gallery);
    ~Phone() override;

    // Lets the screens show what the wallet has become.
    void refresh();
    // The screen without the frame, for pictures.
    QWidget& screen() { return *m_screen; }

  private:
    void showScreens();
    std::shared_ptr<UIViewController> makeTabs();
    std::shared_ptr<UIViewController> makeLogin();

    Gallery& m_gallery;
    QWidget* m_screen;
    std::shared_ptr<UIViewController> m_root;
    bool m_showsLogin = true;
};

}  // namespace torvel::gallery
