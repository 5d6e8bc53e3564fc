#include "gallery/phone/Screen.h"

#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/Utils/Amounts.h"

#include <QScrollArea>

namespace torvel::gallery {
namespace {

class ScreenView final : public QWidget {
  public:
    explicit ScreenView(const Screen& screen) : m_screen(screen) {}

  protected:
    void showEvent(QShowEvent*) override { m_screen.appeared(); }

  private:
    const Screen& m_screen;
};

}  // namespace

UIView* Screen::loadView() { return new ScreenView(*this); }

void Screen::viewDidLoad() {
    m_area = scrolling(new QWidget);
    column(view())->addWidget(m_area);
    updateTheme();
}

void Screen::updateTheme() {
    if (!isViewLoaded()) return;
    auto* const content = new QWidget;
    QVBoxLayout* const lines = column(content, 2 * grid);
    lines->setContentsMargins(2 * grid, grid, 2 * grid, 2 * grid);
    fill(*lines);
    lines->addStretch();
    if (QWidget* const before = m_area->takeWidget()) before->deleteLater();  // it may be what was clicked
    m_area->setWidget(content);
    content->setAutoFillBackground(false);
}

QHBoxLayout* screenTitle(const QString& title, QWidget* end) {
    QHBoxLayout* const line = row();
    line->addWidget(label(title, type::title()), 1);
    if (end) line->addWidget(end);
    return line;
}

QString money(const std::string& amount) {
    return toQt(getDisplayAmount(amount, false, " ", TorvelConfigurations::currencyCode(), true));
}

QWidget* entryRow(const Wallet::Entry& entry) {
    auto* const made = new QWidget;
    auto* const line = row(1.5 * grid);
    made->setLayout(line);
    line->setContentsMargins(0, grid / 2, 0, grid / 2);
    line->addWidget(
        new IconTile(Icon::send, &ColorDAO::circlePrimaryColor, &ColorDAO::circleSecondaryBackgroundColor));
    QVBoxLayout* const words = column(nullptr, 2);
    words->addWidget(label(ltr(toQt(entry.to)), type::strong()));
    const QString about = toQt(entry.reference) + (entry.note.empty() ? "" : " · " + toQt(entry.note));
    words->addWidget(label(about, type::caption(), &ColorDAO::secondaryTextColor));
    line->addLayout(words, 1);
    line->addWidget(label(money(entry.amount), type::strong()));
    return made;
}

}  // namespace torvel::gallery
