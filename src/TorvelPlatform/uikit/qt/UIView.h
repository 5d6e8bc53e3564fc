#pragma once

class QWidget;

namespace torvel {

// A view: the platform's views are the toolkit's widgets, so that every widget of a host and every interface
// file that a designer drew takes part. For the main thread.
//
// A view takes the writing direction in force (ScreenEnvironment::direction), that of a screen when it is
// loaded, any other, once connectToQt() was called, when it is first shown; and keeps it: a change of
// language reaches the views made after it. A direction that is set explicitly counts for the view and all
// that is in it.
using UIView = QWidget;

}  // namespace torvel
