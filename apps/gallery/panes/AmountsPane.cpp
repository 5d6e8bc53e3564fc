#include "TorvelLibrary/TorvelConfigurations.h"
#include "TorvelLibrary/Utils/Amounts.h"
#include "TorvelLibrary/validation/ValidationHelper.h"
#include "TorvelPlatform/foundation/Text.h"
#include "gallery/panes/Panes.h"

#include <QGridLayout>
#include <QLineEdit>

namespace torvel::gallery {
namespace {

constexpr const char* locales[] = {"en_US", "en_IN", "de_DE", "fr_FR", "de_CH",
                                   "sw_KE", "ar_EG", "fa_IR", "hi_IN"};

// What each locale makes of the amount; the wallet's own locale is put back.
struct Shown {
    QString without, with;
};
Shown shownIn(const Locale& locale, const std::string& amount) {
    const Locale before = defaultLocale();
    setDefaultLocale(locale);
    const std::string symbol = locale.currencySymbol().value_or("");
    const Shown shown{toQt(getDisplayAmountWithoutCurrency(amount, symbol, true)),
                      toQt(getDisplayAmount(amount, false, " ", symbol, true))};
    setDefaultLocale(before);
    return shown;
}

QWidget* localeTable(const std::string& amount) {
    auto* const card = new Card;
    auto* const table = new QGridLayout;
    table->setHorizontalSpacing(3 * grid);
    table->setVerticalSpacing(1.5 * grid);
    const auto head = [&](int at, const char* key) {
        table->addWidget(label(text(key), type::label(), &ColorDAO::secondaryTextColor), 0, at);
    };
    head(0, "amount_locale");
    head(1, "amount_plain");
    head(2, "amount_currency");
    int line = 1;
    for (const char* identifier : locales) {
        const Shown shown = shownIn(Locale(identifier), amount);
        table->addWidget(label(identifier, type::code(), &ColorDAO::secondaryTextColor), line, 0);
        table->addWidget(label(ltr(shown.without), type::body()), line, 1);
        table->addWidget(label(shown.with, type::strong()), line, 2);
        ++line;
    }
    table->setColumnStretch(1, 1);
    table->setColumnStretch(2, 1);
    card->content->addLayout(table);
    return card;
}

QWidget* factsCard(const std::string& amount) {
    auto* const card = new Card;
    QHBoxLayout* const line = row(2 * grid);
    const bool fits = ValidationHelper::validateAmount(amount);
    const auto number = decimalNumber(amount);
    line->addWidget(label("formattedWithSeparator", type::code(), &ColorDAO::secondaryTextColor));
    line->addWidget(label(number ? toQt(formattedWithSeparator(*number)) : "—", type::strong()), 1);
    line->addWidget(new Badge(text(fits ? "amount_valid" : "amount_invalid"),
                              fits ? &ColorDAO::circleAcceptColor : &ColorDAO::circleRejectColor));
    card->content->addLayout(line);
    return card;
}

// The parts below the field, which stays while they change.
class Results final : public QWidget {
  public:
    explicit Results(const std::string& amount) : m_amount(amount), m_lines(column(this, 2 * grid)) {
        fill();
    }

    void fill() {
        while (QLayoutItem* const item = m_lines->takeAt(0)) {
            delete item->widget();
            delete item;
        }
        m_lines->addWidget(factsCard(m_amount));
        m_lines->addWidget(localeTable(m_amount));
    }

  private:
    const std::string& m_amount;
    QVBoxLayout* m_lines;
};

}  // namespace

QWidget* makeAmountsPane(Gallery& gallery) {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    auto* const card = new Card;
    auto* const results = new Results(gallery.drafts.consoleAmount);
    auto* const field =
        new Field(text("transfer_amount"), gallery.drafts.consoleAmount, [results] { results->fill(); });
    card->content->addWidget(field->configured("console_amount", 20));
    lines->addWidget(card);
    lines->addWidget(results);
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
