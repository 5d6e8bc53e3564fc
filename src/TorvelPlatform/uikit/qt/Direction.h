#pragma once  // internal

class QWidget;

namespace torvel {

// Gives a view the writing direction in force, for good. That of an ancestor is inherited, unless it was
// taken here too and is out of date: one that somebody set on purpose counts for all that is in it.
void takeDirection(QWidget& view);

}  // namespace torvel
