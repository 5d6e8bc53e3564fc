#pragma once

#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/uikit/qt/UIView.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace torvel {

// An interface file of a bundle: "<name>.ui", as Qt Designer writes it. A value; the file is read when a
// view is made of it. For the main thread of a process that has its QApplication.
class UINib {
  public:
    // The interface file of a name in a bundle, whether it is there or not.
    UINib(std::string_view nibName, Bundle bundle) : m_name(nibName), m_bundle(std::move(bundle)) {}

    // The name without its type.
    const std::string& name() const { return m_name; }
    // The bundle that the file is looked for in.
    const Bundle& bundle() const { return m_bundle; }

    // A new view from the file; nullptr when it is missing or cannot be used, which is reported to the
    // diagnostics.
    std::unique_ptr<UIView> instantiate() const;

    // Makes a new view, which the caller owns.
    using ViewFactory = std::function<UIView*()>;
    // Makes interface files know the views of a class by its name, for the life of the process. Without it
    // a file's view of that class is the one that the file says it is promoted from.
    static void registerView(std::string_view className, ViewFactory factory);

  private:
    std::string m_name;
    Bundle m_bundle;
};

}  // namespace torvel
