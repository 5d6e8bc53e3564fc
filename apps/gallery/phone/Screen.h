#pragma once

#include "TorvelPlatform/uikit/qt/UIViewController.h"
#include "gallery/Gallery.h"
#include "gallery/kit/Card.h"
#include "gallery/kit/Controls.h"

class QScrollArea;

namespace torvel::gallery {

// A screen of the phone: a column that scrolls, filled anew whenever the wallet changes.
class Screen : public UIViewController {
  public:
    explicit Screen(Gallery& gallery) : m_gallery(gallery) {}

    void viewDidLoad() final;
    void updateTheme() final;

    // Called each time the screen comes into view.
    std::function<void()> appeared = [] {};

  protected:
    virtual void fill(QVBoxLayout& column) = 0;
    UIView* loadView() override;

    Gallery& m_gallery;

  private:
    QScrollArea* m_area = nullptr;
};

// The line at the top of a screen: its name, and what stands at the end of the line.
QHBoxLayout* screenTitle(const QString& title, QWidget* end = nullptr);

// An amount as the wallet shows it.
QString money(const std::string& amount);

// The screens of the wallet, each filled in the file of its name.
std::shared_ptr<Screen> makeLoginScreen(Gallery& gallery);
std::shared_ptr<Screen> makeHomeScreen(Gallery& gallery);
std::shared_ptr<Screen> makeTransferScreen(Gallery& gallery);
std::shared_ptr<Screen> makeCardScreen(Gallery& gallery);
std::shared_ptr<Screen> makeStatementScreen(Gallery& gallery);
std::shared_ptr<Screen> makeSettingsScreen(Gallery& gallery);

// One entry of the statement.
QWidget* entryRow(const Wallet::Entry& entry);

}  // namespace torvel::gallery
