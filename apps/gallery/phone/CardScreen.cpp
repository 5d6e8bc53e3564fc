#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/Utils/Strings.h"
#include "TorvelLibrary/validation/CardUtils.h"
#include "TorvelLibrary/validation/ValidationHelper.h"
#include "gallery/phone/Screen.h"

#include <QLineEdit>
#include <QPainter>

namespace torvel::gallery {
namespace {

std::string digitsOf(const std::string& typed) {
    return onlyNumbers(typed, CharacterSet::charactersIn("0123456789"));
}

// The first scheme that a number, whole or not, belongs to; empty for none.
const char* schemeOf(const std::string& digits) {
    const CardUtils& cards = CardUtils::sharedInstance();
    if (digits.empty()) return "";
    if (cards.validateVisaTypeCard(digits)) return "Visa";
    if (cards.validateMasterTypeCard(digits)) return "Mastercard";
    if (cards.validateAmericanExpressTypeCard(digits)) return "American Express";
    if (cards.validatityOfDinersClubTypeCard(digits)) return "Diners Club";
    if (cards.validatityOfDiscoverTypeCard(digits)) return "Discover";
    if (cards.validatityOfJcbTypeCard(digits)) return "JCB";
    return cards.validateRupayCard(digits) ? "RuPay" : "";
}

// The digits in groups of four, dots for what is missing of sixteen.
QString grouped(const std::string& digits) {
    QString shown;
    for (std::size_t i = 0; i < std::max<std::size_t>(digits.size(), 16); ++i) {
        if (i > 0 && i % 4 == 0) shown += "  ";
        shown += i < digits.size() ? QChar(digits[i]) : QChar(0x2022);
    }
    return shown;
}

// The card as it will look. Cards are printed from left to right everywhere.
class CardPicture final : public QWidget {
  public:
    explicit CardPicture(const Drafts& drafts) : m_drafts(drafts) {
        setFixedHeight(200);
        setLayoutDirection(Qt::LeftToRight);
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        paintSurface(painter);
        const QRect inner = rect().adjusted(24, 24, -24, -24);
        const std::string digits = digitsOf(m_drafts.cardNumber);
        painter.setPen(Qt::white);
        painter.setFont(type::heading());
        painter.drawText(inner, Qt::AlignTop | Qt::AlignRight, schemeOf(digits));
        painter.drawText(inner.adjusted(0, 84, 0, 0), Qt::AlignTop | Qt::AlignLeft, grouped(digits));
        painter.setFont(type::label());
        const QString name = toQt(m_drafts.cardName).toUpper();
        const QString shown = name.isEmpty() ? text("card_name") : name;
        painter.drawText(inner.adjusted(0, 0, -64, 0), Qt::AlignBottom | Qt::AlignLeft, shown);
        painter.drawText(inner, Qt::AlignBottom | Qt::AlignRight,
                         m_drafts.cardExpiry.empty() ? "••/••" : toQt(m_drafts.cardExpiry));
    }

  private:
    void paintSurface(QPainter& painter) {
        QLinearGradient gradient(0, 0, width(), height());
        gradient.setColorAt(0, color(&ColorDAO::circleTopGradientColor).darker(135));
        gradient.setColorAt(1, color(&ColorDAO::circleBottomGradientColor));
        painter.setPen(Qt::NoPen);
        painter.setBrush(gradient);
        painter.drawRoundedRect(rect(), 20, 20);
        painter.setBrush(QColor(0xF2, 0xD4, 0x8B));
        painter.drawRoundedRect(QRectF(24, 28, 40, 30), 6, 6);
        painter.setPen(QPen(QColor(0xB8, 0x96, 0x4B), 1));
        painter.drawLine(QPointF(24, 43), QPointF(64, 43));
        painter.drawLine(QPointF(44, 28), QPointF(44, 58));
    }

    const Drafts& m_drafts;
};

class CardScreen final : public Screen {
  public:
    using Screen::Screen;

  protected:
    void fill(QVBoxLayout& column) override;

  private:
    void judge();
    void judgeNumber();

    CardPicture* m_picture = nullptr;
    Field *m_number = nullptr, *m_name = nullptr, *m_expiry = nullptr;
};

void CardScreen::fill(QVBoxLayout& column) {
    Drafts& drafts = m_gallery.drafts;
    column.addLayout(screenTitle(text("card_title")));
    m_picture = new CardPicture(drafts);
    column.addWidget(m_picture);
    auto* const card = new Card;
    card->content->setSpacing(2 * grid);
    m_number = new Field(text("card_number"), drafts.cardNumber, [this] { judge(); });
    m_name = new Field(text("card_name"), drafts.cardName, [this] { judge(); });
    m_expiry = new Field(text("card_expiry"), drafts.cardExpiry, [this] { judge(); });
    card->content->addWidget(m_number->configured("card_number", 23));
    card->content->addWidget(m_name->configured("card_name", 26));
    card->content->addWidget(m_expiry->configured("card_expiry", 5));
    m_expiry->edit().setPlaceholderText("MM/YY");
    column.addWidget(card);
    judge();
}

void CardScreen::judge() {
    const CardUtils& cards = CardUtils::sharedInstance();
    const Drafts& drafts = m_gallery.drafts;
    judgeNumber();
    if (drafts.cardName.empty())
        m_name->say("");
    else if (cards.validateCardName(drafts.cardName))
        m_name->say("", Field::Tone::good);
    else
        m_name->say(text("card_name_bad"), Field::Tone::bad);
    const auto expiry = cards.validateExpiryDate(drafts.cardExpiry);
    if (drafts.cardExpiry.size() < 5)
        m_expiry->say(text("card_expiry_hint"));
    else if (expiry)
        m_expiry->say(text(*expiry ? "card_expiry_good" : "card_expiry_past"),
                      *expiry ? Field::Tone::good : Field::Tone::bad);
    else
        m_expiry->say(text("card_expiry_bad"), Field::Tone::bad);
    m_picture->update();
}

// Whole numbers by the check digit, the beginnings of numbers by their scheme.
void CardScreen::judgeNumber() {
    const std::string digits = digitsOf(m_gallery.drafts.cardNumber);
    const QString scheme = schemeOf(digits);
    if (digits.empty()) return m_number->say(text("card_number_hint"));
    if (!ValidationHelper::validateData(digits, TorvelConfigurations::cardNumberRegex()))
        return m_number->say(scheme.isEmpty() ? text("card_unknown") : text("card_scheme", scheme));
    if (CardUtils::sharedInstance().validateCardNumber(digits))
        m_number->say(text("card_luhn_good", scheme.isEmpty() ? text("card_unknown") : scheme),
                      Field::Tone::good);
    else
        m_number->say(text("card_invalid"), Field::Tone::bad);
}

}  // namespace

std::shared_ptr<Screen> makeCardScreen(Gallery& gallery) { return std::make_shared<CardScreen>(gallery); }

}  // namespace torvel::gallery
