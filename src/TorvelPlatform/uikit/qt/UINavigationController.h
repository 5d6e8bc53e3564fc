#pragma once

#include "TorvelPlatform/uikit/qt/UIViewController.h"

namespace torvel {

// A stack of screens, the last of its children visible, under a bar with its title and a way back. The
// parts of its view have object names for style sheets: "navigationBar", "navigationBack" and
// "navigationTitle". For the main thread; nullptr as a screen stops the process.
class UINavigationController : public UIViewController {
  public:
    // A stack of one screen, or an empty one.
    explicit UINavigationController(std::shared_ptr<UIViewController> root = nullptr);
    ~UINavigationController() override;

    // Puts a screen on top.
    void pushViewController(std::shared_ptr<UIViewController> controller);
    // Takes the top screen off and returns it; the last one stays, and then it is nullptr.
    std::shared_ptr<UIViewController> popViewController();
    // Takes all screens off but the first.
    void popToRootViewController();
    // The top screen; nullptr when there is none.
    UIViewController* visibleViewController() const;
    // Shows or hides the bar, which is shown at first.
    void setNavigationBarHidden(bool hidden);

    // Passes it on to all screens.
    void updateTheme() override;

  protected:
    UIView* loadView() override;
    void childrenDidChange() override;

  private:
    struct Parts;

    void showTop();
    void showBar();

    bool m_barHidden = false;
    std::unique_ptr<Parts> m_parts;  // of the view, as long as that is loaded
};

}  // namespace torvel
