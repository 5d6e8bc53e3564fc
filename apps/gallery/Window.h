#pragma once

#include "gallery/Gallery.h"

#include <QTimer>
#include <QWidget>

namespace torvel::gallery {

class Phone;

// The window: the list of panes, the phone, and the chosen pane.
class Window final : public QWidget {
  public:
    explicit Window(Gallery& gallery);
    ~Window() override;

    // Makes all views anew, in the language and the theme in force.
    void rebuild();
    Phone& phone() { return *m_phone; }

  protected:
    void paintEvent(QPaintEvent*) override;

  private:
    QWidget* makeSidebar();
    void showPane();

    Gallery& m_gallery;
    QWidget* m_content = nullptr;
    Phone* m_phone = nullptr;
    QWidget* m_paneHolder = nullptr;
    QTimer m_logTimer;  // lines come in bursts
};

}  // namespace torvel::gallery
