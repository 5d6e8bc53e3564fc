#include "TorvelPlatform/uikit/qt/UITextField.h"

#include "TorvelPlatform/foundation/MainThread.h"

#include <QLineEdit>

namespace torvel {

std::string getRawValue(const UITextField& field) {
    expectMainThread("UITextField");
    return field.text().toStdString();
}

void setPrepopulatedText(UITextField& field, std::string_view text) {
    expectMainThread("UITextField");
    field.setText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

}  // namespace torvel
