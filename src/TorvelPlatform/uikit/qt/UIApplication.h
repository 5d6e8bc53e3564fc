#pragma once

namespace torvel {

class UIViewController;

// The application as a whole. For the main thread.
struct UIApplication {
    // The screen that the user sees: from a navigation controller on to its visible screen, from a tab-bar
    // controller on to its selected one, as far as there is one. nullptr for nullptr, and for a navigation
    // controller without screens.
    static UIViewController* getTopViewController(UIViewController* base);
};

}  // namespace torvel
