#pragma once

#include "TorvelPlatform/uikit/qt/UIViewController.h"

#include <cstddef>

namespace torvel {

// Screens side by side, one of its children visible or none, over a bar with a button for each. The parts of
// its view have object names for style sheets: "tabBar" and, for each button, "tabBarButton". For the main
// thread; nullptr as a screen stops the process.
class UITabBarController : public UIViewController {
  public:
    // A bar without screens.
    UITabBarController();
    ~UITabBarController() override;

    // Replaces the screens and selects the first.
    void setViewControllers(std::vector<std::shared_ptr<UIViewController>> controllers);
    // The position of the selected screen; absent when none is selected.
    std::optional<std::size_t> selectedIndex() const;
    // Selects the screen at a position; none when it is absent or beyond the last.
    void setSelectedIndex(std::optional<std::size_t> index);
    // The selected screen; nullptr when none is.
    UIViewController* selectedViewController() const { return m_selected; }

    // Passes it on to all screens.
    void updateTheme() override;

  protected:
    UIView* loadView() override;
    void childrenDidChange() override;

  private:
    struct Parts;

    void showSelected();
    void showBar();

    UIViewController* m_selected = nullptr;  // one of the children
    std::unique_ptr<Parts> m_parts;          // of the view, as long as that is loaded
};

}  // namespace torvel
