#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/validation/ValidationHelper.h"
#include "gallery/phone/Screen.h"

#include <QLineEdit>

namespace torvel::gallery {
namespace {

constexpr qsizetype shownText = 96;  // of a member of the envelope

class TransferScreen final : public Screen {
  public:
    using Screen::Screen;

  protected:
    void fill(QVBoxLayout& column) override;

  private:
    void fillForm(QVBoxLayout& column);
    void fillResult(QVBoxLayout& column, const Wallet::Sealed& sealed);
    void judge();

    Field* m_to = nullptr;
    Field* m_amount = nullptr;
    Pill* m_button = nullptr;
};

void TransferScreen::fill(QVBoxLayout& column) {
    column.addLayout(screenTitle(text("transfer_title")));
    if (const auto& sealed = m_gallery.wallet.lastTransfer())
        fillResult(column, *sealed);
    else
        fillForm(column);
}

void TransferScreen::fillForm(QVBoxLayout& column) {
    Wallet& wallet = m_gallery.wallet;
    Drafts& drafts = m_gallery.drafts;
    auto* const card = new Card;
    card->content->setSpacing(2 * grid);
    m_to = new Field(text("transfer_to"), drafts.to, [this] { judge(); });
    m_amount = new Field(text("transfer_amount"), drafts.amount, [this] { judge(); });
    auto* const note = new Field(text("transfer_note"), drafts.note, [] {});
    card->content->addWidget(m_to->configured("transfer_to", int(TorvelConfigurations::mobileNoLength())));
    card->content->addWidget(
        m_amount->configured("transfer_amount", int(TorvelConfigurations::amountLength())));
    card->content->addWidget(note->configured("transfer_note", 40));
    column.addWidget(card);
    QHBoxLayout* const seal = row();
    seal->addWidget(new IconTile(Icon::lock, &ColorDAO::circleAcceptColor, &ColorDAO::surfaceColor, 32));
    seal->addWidget(wrapped(label(text("transfer_sealed"), type::caption(), &ColorDAO::secondaryTextColor)),
                    1);
    column.addLayout(seal);
    m_button = new Pill(text(wallet.isBusy() ? "busy" : "transfer_button"), Pill::Look::filled,
                        [&wallet, &drafts] { wallet.transfer(drafts.to, drafts.amount, drafts.note); });
    m_button->setObjectName("transfer_button");
    column.addWidget(m_button);
    judge();
    if (wallet.fault() == Wallet::Fault::declined) m_amount->say(text("transfer_declined"), Field::Tone::bad);
    if (wallet.fault() == Wallet::Fault::offline) m_amount->say(text("offline"), Field::Tone::bad);
}

void TransferScreen::judge() {
    const Drafts& drafts = m_gallery.drafts;
    const bool toFits = ValidationHelper::validateMobileNo(drafts.to);
    const bool amountFits = ValidationHelper::validateAmount(drafts.amount);
    const bool isWhole = std::ssize(drafts.to) >= TorvelConfigurations::mobileNoLength();
    m_to->say(isWhole && !toFits ? text("login_number_bad") : QString(), toFits    ? Field::Tone::good
                                                                         : isWhole ? Field::Tone::bad
                                                                                   : Field::Tone::neutral);
    if (drafts.amount.empty())
        m_amount->say("");
    else if (amountFits)
        m_amount->say(money(drafts.amount), Field::Tone::good);
    else
        m_amount->say(text("transfer_amount_bad"), Field::Tone::bad);
    m_button->setEnabled(toFits && amountFits && !m_gallery.wallet.isBusy());
}

void TransferScreen::fillResult(QVBoxLayout& column, const Wallet::Sealed& sealed) {
    auto* const done = new Card;
    done->content->addWidget(
        new IconTile(Icon::check, &ColorDAO::circleAcceptColor, &ColorDAO::circleTextFieldBGColor, 56), 0,
        Qt::AlignHCenter);
    QLabel* const words = label(text("transfer_done", toQt(sealed.reference)), type::heading());
    words->setObjectName("transfer_done");
    words->setAlignment(Qt::AlignCenter);
    done->content->addWidget(words);
    column.addWidget(done);

    Card* const envelope = titledCard(text("envelope_title"));
    envelope->content->addWidget(
        wrapped(label(text("envelope_sent"), type::caption(), &ColorDAO::secondaryTextColor)));
    const auto root = JSON::parse(sealed.envelope);
    for (const char* name : {"RequestKey", "RequestData"}) {
        const auto value = root ? root.value().member(name) : std::nullopt;
        if (!value || !value->string()) continue;
        const QString whole = toQt(*value->string());
        envelope->content->addWidget(label(name, type::label()));
        envelope->content->addWidget(code(whole.size() > shownText ? whole.left(shownText) + "…" : whole));
    }
    envelope->content->addWidget(
        wrapped(label(text("envelope_opened"), type::caption(), &ColorDAO::secondaryTextColor)));
    envelope->content->addWidget(code(toQt(sealed.plainText).simplified()));
    column.addWidget(envelope);
    auto* const again = new Pill(text("transfer_again"), Pill::Look::filled, [this] {
        m_gallery.drafts.amount.clear();
        m_gallery.drafts.note.clear();
        m_gallery.wallet.forgetTransfer();
        m_gallery.refresh();
    });
    column.addWidget(again);
}

}  // namespace

std::shared_ptr<Screen> makeTransferScreen(Gallery& gallery) {
    return std::make_shared<TransferScreen>(gallery);
}

}  // namespace torvel::gallery
