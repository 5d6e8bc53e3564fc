#pragma once

#include "gallery/kit/Icons.h"

#include <QAbstractButton>
#include <functional>
#include <string>
#include <vector>

class QLabel;
class QLineEdit;

// What the user presses and types into.
namespace torvel::gallery {

// A button with round ends.
class Pill final : public QAbstractButton {
  public:
    enum class Look { filled, tonal, plain };
    Pill(const QString& text, Look look, std::function<void()> clicked, Icon icon = Icon::none);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    QColor ink() const;
    QColor fill() const;

    Look m_look;
    Icon m_icon;
};

// Choices side by side, one of them chosen.
class Segment final : public QWidget {
  public:
    Segment(const std::vector<QString>& choices, std::size_t chosen, std::function<void(std::size_t)> choose);

  protected:
    void paintEvent(QPaintEvent*) override;
};

// A line of a list that can be pressed: an icon, a text, whether it is the chosen one.
class NavigationRow final : public QAbstractButton {
  public:
    NavigationRow(Icon icon, const QString& text, bool chosen, std::function<void()> clicked);

    QSize sizeHint() const override { return {160, 5 * grid}; }

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    Icon m_icon;
};

// A field for one line of text with its name above it and what is to be said of it below.
class Field final : public QWidget {
  public:
    enum class Tone { neutral, good, bad };

    // The text stands in `draft`, which must outlive the field; `edited` is called for every change.
    Field(const QString& name, std::string& draft, std::function<void()> edited);

    void say(const QString& message, Tone tone = Tone::neutral);
    // The object name, the longest text, and whether the characters are hidden.
    Field* configured(const char* name, int longest, bool secret = false);
    QLineEdit& edit() { return *m_edit; }

  protected:
    void paintEvent(QPaintEvent*) override;
    bool eventFilter(QObject* object, QEvent* event) override;

  private:
    QLineEdit* m_edit;
    QLabel* m_message;
    Tone m_tone = Tone::neutral;
};

}  // namespace torvel::gallery
