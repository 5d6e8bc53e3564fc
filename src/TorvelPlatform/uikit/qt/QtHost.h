#pragma once

namespace torvel {

/// Connects the platform to the process's QApplication, until that ends: the toolkit's loop drains the main
/// queue, and the screen's width is that of the primary screen, in points of one pixel, also after it
/// changes. A host calls it once, on the main thread, right after it made the QApplication.
void connectToQt();

}  // namespace torvel
