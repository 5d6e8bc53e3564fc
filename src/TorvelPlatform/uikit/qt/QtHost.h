#pragma once

namespace torvel {

// Connects the platform to the process's QApplication, until that ends: the toolkit's loop drains the main
// queue, ScreenEnvironment follows the primary screen (its width in points, its pixels a point, how it is
// held), and views take their writing direction from there (see UIView). A host calls it once, on the main
// thread, right after it made the QApplication.
void connectToQt();

}  // namespace torvel
