#pragma once

#include "gallery/Host.h"
#include "gallery/LogTap.h"
#include "gallery/Wallet.h"

#include <cstddef>
#include <functional>
#include <string>

namespace torvel::gallery {

// What the user typed so far; it outlives the views, which a change of language makes anew.
struct Drafts {
    std::string number, pin;
    std::string to, amount, note;
    std::string cardNumber, cardName, cardExpiry;
    std::string consoleAmount = "1234567.89";
    std::string consoleURL = "app://wallet/send?to=0700000002&amount=25.00";
    std::string storeKey, storeValue;
    std::string fontFile;
};

// The panes around the phone, in the order of their list.
enum class Pane { theme, type, fonts, images, amounts, router, network, store, log };

// The screens behind the phone's tab bar, in its order.
enum class Tab { home, send, card, statement, settings };

// The application's state, and the only way to change what all views depend on. Main thread.
class Gallery {
  public:
    // Takes up the language that was last chosen.
    explicit Gallery(const Host& host);

    // Makes every view anew, after what is running now.
    std::function<void()> rebuild = [] {};
    // Shows what the wallet has become, and the pane's own state with it.
    std::function<void()> refresh = [] {};
    // Shows what the pane's own state has become.
    std::function<void()> refreshPane = [] {};
    // Shows new lines of the log, soon.
    std::function<void()> logged = [] {};

    void setLanguage(const std::string& language);
    void setDark(bool dark);
    void open(Pane pane);
    void open(Tab tab);

    bool isDark() const { return m_isDark; }
    Pane pane() const { return m_pane; }
    Tab tab() const { return m_tab; }
    // The tab bar tells of a tab that the user chose.
    void noteTab(Tab tab) { m_tab = tab; }

    Wallet wallet;
    LogTap log{[this] { logged(); }};
    Drafts drafts;
    std::string routed;             // what the router last did, for its console
    bool isUnknown = false;         // it knew no such path
    std::string waiting;            // the path of the target that waits for a login
    std::size_t fontWeight = 2;     // of the type scale that is shown
    std::size_t imageColour = 0;    // of the recoloured images
    bool isSettingsPushed = false;  // over the login screen

  private:
    void registerRoutes();

    bool m_isDark = false;
    Pane m_pane = Pane::theme;
    Tab m_tab = Tab::home;
};

// The languages of the sample host, with their own names.
struct Language {
    const char* code;
    const char* name;
};
inline constexpr Language languages[] = {{"en", "English"}, {"fr", "Français"}, {"ar", "العربية"}};

// The routes, all of which the router knows.
struct Route {
    const char* path;
    Tab tab;
    bool isProtected;
};
inline constexpr Route routes[] = {
    {"/home", Tab::home, true},           {"/send", Tab::send, true},          {"/card", Tab::card, true},
    {"/statement", Tab::statement, true}, {"/settings", Tab::settings, false},
};

// Hands a URL to the router and keeps what became of it.
void openURL(Gallery& gallery, const std::string& url);

}  // namespace torvel::gallery
