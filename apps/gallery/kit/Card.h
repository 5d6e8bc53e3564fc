#pragma once

#include "gallery/kit/Icons.h"

#include <QBoxLayout>
#include <QLabel>
#include <QScrollArea>

// The shared pieces that screens and panes are laid out from.
namespace torvel::gallery {

// The text in the direction of the language, whatever its own first letter: the toolkit would go by that.
QString directed(const QString& text);

// A text; `wrapped` ones take as many lines as they need.
QLabel* label(const QString& text, const QFont& font, Role ink = &ColorDAO::regularTextColor);
QLabel* wrapped(QLabel* label);

// A column or row without margins in a new widget.
QVBoxLayout* column(QWidget* parent, int spacing = grid);
QHBoxLayout* row(int spacing = grid);

// A surface with round corners whose content stands in `content`.
class Card : public QWidget {
  public:
    explicit Card(Role fill = &ColorDAO::surfaceColor, int padding = 2 * grid);
    QVBoxLayout* const content;

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    Role m_fill;
};

// A card with its name over the content.
Card* titledCard(const QString& title);

// A short word on a tint of its colour.
class Badge final : public QLabel {
  public:
    Badge(const QString& text, Role ink);

  protected:
    void paintEvent(QPaintEvent* event) override;

  private:
    Role m_ink;
};

// What stands in the place of a list without entries.
QWidget* emptyState(Icon icon, const QString& text);

// A text for machines: from left to right whatever the language, breaking anywhere.
QLabel* code(const QString& text);

// A quiet scroll area around a widget, which it owns.
QScrollArea* scrolling(QWidget* content);

}  // namespace torvel::gallery
