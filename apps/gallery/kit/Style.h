#pragma once

#include "TorvelLibrary/Utils/ColorDAO.h"
#include "TorvelPlatform/uikit/UIFont.h"

#include <QColor>
#include <QFont>
#include <QString>
#include <string>
#include <string_view>

// Colours, type and texts: all that the screens show of the theme, the fonts and the language in force.
namespace torvel::gallery {

// A colour of the theme by its member.
using Role = std::string ColorDAO::*;
QColor color(Role role);

// The contrast ratio of two opaque colours, 1 to 21 (WCAG 2.1, 1.4.3).
double contrast(const QColor& a, const QColor& b);

// The type hierarchy, from the library's catalogue of styles.
namespace type {
QFont display();  // one number or name a screen
QFont title();    // a screen's own name
QFont heading();  // a card's name
QFont body();
QFont strong();  // body, for what is looked for
QFont label();   // what stands over or beside a value
QFont caption();
QFont code();  // envelopes, hexadecimal texts, logs
}  // namespace type

// A text of the sample host in the language in force; the second puts `argument` in the place of "%@".
QString text(std::string_view key);
QString text(std::string_view key, const QString& argument);

// A text that reads from left to right in any language: names, numbers with units, formulas.
QString ltr(const QString& text);

inline QString toQt(std::string_view text) { return QString::fromUtf8(text.data(), qsizetype(text.size())); }

// Distances are multiples of it.
inline constexpr int grid = 8;

}  // namespace torvel::gallery
