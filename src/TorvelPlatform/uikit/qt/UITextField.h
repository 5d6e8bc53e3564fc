#pragma once

#include <string>
#include <string_view>

class QLineEdit;

namespace torvel {

// A field for one line of text. For the main thread.
using UITextField = QLineEdit;

// The text of a field exactly as it stands there; the empty text when there is none.
std::string getRawValue(const UITextField& field);
// Puts a text into a field.
void setPrepopulatedText(UITextField& field, std::string_view text);

}  // namespace torvel
