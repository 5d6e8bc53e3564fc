#include "gallery/phone/Screen.h"

namespace torvel::gallery {
namespace {

class StatementScreen final : public Screen {
  public:
    using Screen::Screen;

  protected:
    void fill(QVBoxLayout& column) override {
        const auto& entries = m_gallery.wallet.entries();
        auto* const again =
            new Pill(text("statement_refresh"), Pill::Look::tonal, [this] { m_gallery.wallet.refresh(); });
        column.addLayout(screenTitle(text("statement_title"), again));
        auto* const card = new Card;
        if (entries.empty()) card->content->addWidget(emptyState(Icon::inbox, text("statement_empty")));
        for (const Wallet::Entry& entry : entries) card->content->addWidget(entryRow(entry));
        column.addWidget(card);
        auto* const balance = new Card(&ColorDAO::secondaryBackgroundColor);
        QHBoxLayout* const line = row();
        line->addWidget(label(text("balance_title"), type::strong()), 1);
        line->addWidget(label(money(m_gallery.wallet.balance()), type::heading()));
        balance->content->addLayout(line);
        column.addWidget(balance);
    }
};

}  // namespace

std::shared_ptr<Screen> makeStatementScreen(Gallery& gallery) {
    return std::make_shared<StatementScreen>(gallery);
}

}  // namespace torvel::gallery
