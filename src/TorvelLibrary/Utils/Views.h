#pragma once

#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelPlatform/uikit/qt/UINib.h"

#include <memory>
#include <string_view>

namespace torvel {

// Helpers for views and screens. Types are those that TORVEL_TYPE names. All but isRTL() is for the main
// thread.

// The interface file of a name: that of the main bundle when it has one, else that of the other bundle.
UINib nibNamed(std::string_view name, const Bundle& otherwise);

// The interface file named exactly like a type: that of the main bundle, else of the type's resource bundle.
template <class View>
UINib getNib() {
    return nibNamed(TypeName<View>::name, resourceBundleFor<View>());
}

// A new screen whose view comes from the interface file named like its type; the type takes over
// UIViewController's constructors.
template <class Controller>
std::shared_ptr<Controller> instantiate() {
    return std::make_shared<Controller>(getNib<Controller>());
}

// The name of a type, under which lists keep its cells.
template <class View>
inline constexpr std::string_view reuseIdentifier = TypeName<View>::name;

// Makes interface files know a view type by its name; it must have a constructor without arguments.
template <class View>
void registerView() {
    UINib::registerView(TypeName<View>::name, [] { return new View; });
}

// Whether the language in force is written from right to left. Any thread.
bool isRTL();

}  // namespace torvel
