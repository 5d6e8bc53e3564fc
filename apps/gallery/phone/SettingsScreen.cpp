#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "gallery/phone/Screen.h"

namespace torvel::gallery {
namespace {

class SettingsScreen final : public Screen {
  public:
    using Screen::Screen;

  protected:
    void fill(QVBoxLayout& column) override {
        const Wallet& wallet = m_gallery.wallet;
        if (wallet.isLoggedIn()) column.addLayout(screenTitle(text("settings_title")));
        column.addWidget(languageCard());
        column.addWidget(themeCard());
        if (!wallet.isLoggedIn()) return;
        Card* const account = titledCard(text("settings_account"));
        account->content->addWidget(label(toQt(wallet.name()), type::body()));
        account->content->addWidget(
            label(toQt(sandbox::walletNumber), type::caption(), &ColorDAO::secondaryTextColor));
        column.addWidget(account);
        auto* const leave =
            new Pill(text("settings_logout"), Pill::Look::tonal, [this] { m_gallery.wallet.logOut(); });
        leave->setFixedHeight(6 * grid);
        leave->setObjectName("settings_logout");
        column.addWidget(leave);
    }

  private:
    Card* languageCard() {
        Card* const card = titledCard(text("settings_language"));
        for (const Language& language : languages) {
            const bool isChosen = LocaleHelper::currentAppleLanguage() == language.code;
            auto* const line =
                new NavigationRow(isChosen ? Icon::check : Icon::globe, language.name, isChosen,
                                  [this, &language] { m_gallery.setLanguage(language.code); });
            line->setObjectName(QString("language_") + language.code);
            card->content->addWidget(line);
        }
        return card;
    }

    Card* themeCard() {
        Card* const card = titledCard(text("settings_theme"));
        const bool isDark = m_gallery.isDark();
        const auto add = [&](const char* name, Icon icon, bool dark) {
            auto* const line = new NavigationRow(icon, text(name), dark == isDark,
                                                 [this, dark] { m_gallery.setDark(dark); });
            line->setObjectName(name);
            card->content->addWidget(line);
        };
        add("theme_light", Icon::sun, false);
        add("theme_dark", Icon::moon, true);
        return card;
    }
};

}  // namespace

std::shared_ptr<Screen> makeSettingsScreen(Gallery& gallery) {
    return std::make_shared<SettingsScreen>(gallery);
}

}  // namespace torvel::gallery
