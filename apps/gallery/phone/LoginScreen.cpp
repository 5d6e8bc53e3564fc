#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/validation/ValidationHelper.h"
#include "gallery/phone/Screen.h"

#include <QLineEdit>
#include <QPainter>

namespace torvel::gallery {
namespace {

// The application's mark on its gradient.
class Mark final : public QWidget {
  public:
    Mark() { setFixedSize(72, 72); }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QLinearGradient gradient(0, 0, width(), height());
        gradient.setColorAt(0, color(&ColorDAO::circleTopGradientColor));
        gradient.setColorAt(1, color(&ColorDAO::circleBottomGradientColor));
        painter.setPen(Qt::NoPen);
        painter.setBrush(gradient);
        painter.drawRoundedRect(rect(), 22, 22);
        drawIcon(painter, Icon::wallet, QRectF(rect()).adjusted(18, 18, -18, -18), Qt::white,
                 layoutDirection() == Qt::RightToLeft);
    }
};

class LoginScreen final : public Screen {
  public:
    using Screen::Screen;

  protected:
    void fill(QVBoxLayout& column) override;

  private:
    void fillForm(Card& card);
    void judge();

    Field* m_number = nullptr;
    Field* m_pin = nullptr;
    Pill* m_button = nullptr;
};

void LoginScreen::fill(QVBoxLayout& column) {
    column.addSpacing(5 * grid);
    column.addWidget(new Mark, 0, Qt::AlignHCenter);
    column.addSpacing(grid);
    QLabel* const name = label(text("app_name"), type::display());
    name->setAlignment(Qt::AlignCenter);
    column.addWidget(name);
    QLabel* const promise =
        wrapped(label(text("login_promise"), type::body(), &ColorDAO::secondaryTextColor));
    promise->setAlignment(Qt::AlignCenter);
    column.addWidget(promise);
    column.addSpacing(grid);
    auto* const card = new Card;
    fillForm(*card);
    column.addWidget(card);
    column.addWidget(wrapped(label(text("login_hint"), type::caption(), &ColorDAO::secondaryTextColor)));
    column.addStretch();
    std::vector<QString> names;
    std::size_t chosen = 0;
    for (const Language& language : languages) {
        if (LocaleHelper::currentAppleLanguage() == language.code) chosen = names.size();
        names.emplace_back(language.name);
    }
    column.addWidget(
        new Segment(names, chosen, [this](std::size_t i) { m_gallery.setLanguage(languages[i].code); }));
    column.addWidget(new Pill(
        text("settings_title"), Pill::Look::plain, [this] { openURL(m_gallery, "app://wallet/settings"); },
        Icon::gear));
}

void LoginScreen::fillForm(Card& card) {
    Drafts& drafts = m_gallery.drafts;
    card.content->setSpacing(2 * grid);
    m_number = new Field(text("login_number"), drafts.number, [this] { judge(); });
    m_pin = new Field(text("login_pin"), drafts.pin, [this] { judge(); });
    m_number->configured("login_number", int(TorvelConfigurations::mobileNoLength()));
    m_pin->configured("login_pin", int(TorvelConfigurations::pinLength()), true);
    m_button = new Pill(text(m_gallery.wallet.isBusy() ? "busy" : "login_button"), Pill::Look::filled,
                        [this] { m_gallery.wallet.logIn(m_gallery.drafts.number, m_gallery.drafts.pin); });
    m_button->setObjectName("login_button");
    QObject::connect(&m_pin->edit(), &QLineEdit::returnPressed, m_button,
                     [button = m_button] { button->click(); });
    for (QWidget* const part : std::initializer_list<QWidget*>{m_number, m_pin, m_button})
        card.content->addWidget(part);
    judge();
    if (m_gallery.wallet.fault() == Wallet::Fault::refused) m_pin->say(text("login_error"), Field::Tone::bad);
    if (m_gallery.wallet.fault() == Wallet::Fault::offline) m_pin->say(text("offline"), Field::Tone::bad);
}

// What is too short is not blamed while it grows.
void LoginScreen::judge() {
    const Drafts& drafts = m_gallery.drafts;
    const bool numberFits = ValidationHelper::validateMobileNo(drafts.number);
    const bool isWhole = std::ssize(drafts.number) >= TorvelConfigurations::mobileNoLength();
    const bool startsWell = std::string("07").starts_with(drafts.number.substr(0, 2));
    if (numberFits)
        m_number->say(text("login_number_good"), Field::Tone::good);
    else if (drafts.number.empty() || (startsWell && !isWhole))
        m_number->say("");
    else
        m_number->say(text("login_number_bad"), Field::Tone::bad);
    const bool pinFits = ValidationHelper::validateData(drafts.pin, TorvelConfigurations::pinRegEx());
    const bool hasLetters = drafts.pin.find_first_not_of("0123456789") != std::string::npos;
    m_pin->say(hasLetters ? text("login_pin_bad") : QString(),
               hasLetters ? Field::Tone::bad : Field::Tone::neutral);
    m_button->setEnabled(numberFits && pinFits && !m_gallery.wallet.isBusy());
}

}  // namespace

std::shared_ptr<Screen> makeLoginScreen(Gallery& gallery) { return std::make_shared<LoginScreen>(gallery); }

}  // namespace torvel::gallery
