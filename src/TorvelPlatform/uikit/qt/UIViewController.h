#pragma once

#include "TorvelPlatform/uikit/qt/UIImage.h"
#include "TorvelPlatform/uikit/qt/UINib.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

class UINavigationController;

// What the bars of containers show of a screen: its title, and a picture where the bar has room for one.
// For the main thread.
class UIBarItem {
  public:
    // The title; empty at first.
    const std::string& title() const { return m_title; }
    // Changes the title, at once also where it is shown.
    void setTitle(std::string_view title);
    // The picture, absent at first.
    const std::optional<UIImage>& image() const { return m_image; }
    // Changes the picture, at once also where it is shown.
    void setImage(std::optional<UIImage> image);

    UIBarItem(const UIBarItem&) = delete;
    UIBarItem& operator=(const UIBarItem&) = delete;

  private:
    friend class UIViewController;
    explicit UIBarItem(std::function<void()> changed) : m_changed(std::move(changed)) {}

    std::string m_title;
    std::optional<UIImage> m_image;
    std::function<void()> m_changed;
};

// A screen, or a part of one: it owns a view and the controllers in it. Hosts derive theirs from it. For
// the main thread; the view needs a QApplication, the rest does not.
class UIViewController {
  public:
    // A screen with an empty view.
    UIViewController();
    // A screen whose view comes from an interface file; an empty one when that cannot be used.
    explicit UIViewController(UINib nib);
    // Deletes the view, unless a parent view did.
    virtual ~UIViewController();
    UIViewController(const UIViewController&) = delete;
    UIViewController& operator=(const UIViewController&) = delete;

    // The view; the first call makes it and then calls viewDidLoad().
    UIView* view();
    // Whether view() was called.
    bool isViewLoaded() const;
    // For screens: fill the view that was just made.
    virtual void viewDidLoad() {}
    // For screens: take the colours and texts anew. Nothing calls it but the host and the containers, which
    // pass it on to the screens in them.
    virtual void updateTheme() {}

    // What a navigation bar shows of this screen.
    UIBarItem& navigationItem() { return m_navigationItem; }
    // What a tab bar shows of this screen.
    UIBarItem& tabBarItem() { return m_tabBarItem; }
    // The navigation item that stands for the screen where it is used as a part of others: its own without
    // a parent; else that of the outermost of its parent and the parent's parents that is in a navigation
    // controller, or the parent's. Deliberately the navigation controller's own for a screen directly in
    // it.
    UIBarItem& navItem();

    // The controller that this one is in; nullptr at the top.
    UIViewController* parent() const { return m_parent; }
    // The controllers in this one, in the order of their coming.
    const std::vector<std::shared_ptr<UIViewController>>& children() const { return m_children; }
    // Takes a controller in, as the last one, from where it was. The view is the caller's to place. To take
    // in itself, one that it is in or nullptr stops the process.
    void addChild(std::shared_ptr<UIViewController> child);
    // Leaves the parent, which drops its share of this controller; nothing without one.
    void removeFromParent();
    // The nearest navigation controller that this one is in; nullptr when it is in none.
    UINavigationController* navigationController() const;

  protected:
    // Makes the view, which the caller owns; from the interface file unless overridden.
    virtual UIView* loadView();
    // For containers: the children are others now, or what bars show of one is.
    virtual void childrenDidChange() {}

  private:
    struct View;

    void tellParent();

    std::optional<UINib> m_nib;
    std::unique_ptr<View> m_view;
    UIBarItem m_navigationItem{[this] { tellParent(); }};
    UIBarItem m_tabBarItem{[this] { tellParent(); }};
    UIViewController* m_parent = nullptr;
    std::vector<std::shared_ptr<UIViewController>> m_children;
};

}  // namespace torvel
