#include "gallery/Shots.h"

#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "gallery/Gallery.h"
#include "gallery/Window.h"
#include "gallery/phone/Phone.h"

#include <QApplication>
#include <QPixmap>
#include <chrono>
#include <filesystem>

namespace torvel::gallery {
namespace {

// Walks through the application as its user would and takes pictures on the way.
class Walk {
  public:
    Walk(Gallery& gallery, Window& window, std::filesystem::path folder)
        : m_gallery(gallery), m_window(window), m_folder(std::move(folder)) {}

    // The names of pictures begin with the language and the theme.
    void inLanguage(const char* language, bool dark) {
        m_prefix = std::string(language) + (dark ? "-dark-" : "-");
        m_gallery.open(Pane::theme);
        m_gallery.setLanguage(language);
        m_gallery.setDark(dark);
    }
    void login();
    void screens();
    void panes();
    std::optional<std::string> fault() const { return m_fault; }

  private:
    void settle();
    void take(QWidget& view, const std::string& name);
    void phone(const std::string& name) {
        settle();
        take(m_window.phone().screen(), "phone-" + name);
    }
    void window(const std::string& name) {
        settle();
        take(m_window, "window-" + name);
    }
    void logIn();

    Gallery& m_gallery;
    Window& m_window;
    std::filesystem::path m_folder;
    std::string m_prefix;
    std::optional<std::string> m_fault;
};

// Until every request has ended and what was asked for is shown.
void Walk::settle() {
    DispatchQueue::main().runUntil([this] { return !m_gallery.wallet.isBusy(); }, std::chrono::seconds(30));
    DispatchQueue::main().drain();
    QApplication::sendPostedEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QApplication::processEvents();
}

void Walk::take(QWidget& view, const std::string& name) {
    const std::filesystem::path file = m_folder / (m_prefix + name + ".png");
    if (!m_fault && !view.grab().save(QString::fromStdString(file.string()), "PNG", 30))
        m_fault = "cannot write " + file.string();
}

void Walk::logIn() {
    m_gallery.drafts.number = sandbox::walletNumber;
    m_gallery.drafts.pin = sandbox::walletPin;
    m_gallery.wallet.logIn(m_gallery.drafts.number, m_gallery.drafts.pin);
    settle();
}

void Walk::login() {
    if (m_gallery.wallet.isLoggedIn()) m_gallery.wallet.logOut();
    m_gallery.drafts = {};
    m_gallery.rebuild();
    phone("login");
    m_gallery.drafts.number = "0812345678";
    m_gallery.drafts.pin = "4321";
    m_gallery.rebuild();
    phone("login-bad-number");
    m_gallery.drafts.number = sandbox::walletNumber;
    m_gallery.wallet.logIn(sandbox::walletNumber, "0000");
    phone("login-refused");
    openURL(m_gallery, "app://wallet/settings");
    phone("settings-before-login");
    m_gallery.isSettingsPushed = false;
    m_gallery.wallet.forgetFault();
    openURL(m_gallery, m_gallery.drafts.consoleURL);
    m_gallery.open(Pane::router);
    window("router-waiting");
}

void Walk::screens() {
    if (!m_gallery.wallet.isLoggedIn()) logIn();
    m_gallery.drafts = {};
    const struct {
        Tab tab;
        const char* name;
    } tabs[] = {{Tab::home, "home"},
                {Tab::send, "send"},
                {Tab::card, "card"},
                {Tab::statement, "statement"},
                {Tab::settings, "settings"}};
    m_gallery.wallet.forgetTransfer();
    for (const auto& tab : tabs) {
        m_gallery.open(tab.tab);
        phone(tab.name);
    }
    m_gallery.drafts.cardNumber = "4111 1111 1111 1111";
    m_gallery.drafts.cardName = "Amina Diallo";
    m_gallery.drafts.cardExpiry = "08/29";
    m_gallery.open(Tab::card);
    phone("card-good");
    m_gallery.drafts.cardNumber = "5555 5555 5555 4440";
    m_gallery.drafts.cardExpiry = "13/29";
    m_gallery.open(Tab::card);
    phone("card-bad");
    openURL(m_gallery, "app://wallet/send?to=0700000002&amount=9000.00");
    settle();
    m_gallery.wallet.transfer(m_gallery.drafts.to, m_gallery.drafts.amount, "");
    phone("send-declined");
    openURL(m_gallery, "app://wallet/send?to=0700000002&amount=12.50");
    phone("send-filled");
    for (const char* amount : {"40", "7.25", "12.50"}) {
        m_gallery.wallet.transfer("0700000002", amount, "");
        settle();
    }
    phone("send-done");
    m_gallery.open(Tab::home);
    phone("home-filled");
    m_gallery.open(Tab::statement);
    phone("statement-filled");
    m_gallery.open(Tab::home);
}

void Walk::panes() {
    const struct {
        const char* name;
        Tab tab;
    } panes[] = {{"theme", Tab::home},   {"type", Tab::settings},     {"fonts", Tab::settings},
                 {"images", Tab::card},  {"amounts", Tab::statement}, {"router", Tab::send},
                 {"network", Tab::send}, {"store", Tab::settings},    {"log", Tab::statement}};
    for (std::size_t i = 0; i < std::size(panes); ++i) {
        m_gallery.open(panes[i].tab);
        m_gallery.open(Pane(i));
        window(panes[i].name);
    }
    m_gallery.open(Tab::home);
}

}  // namespace

std::optional<std::string> writeShots(Gallery& gallery, Window& window, const std::string& folder) {
    std::error_code failed;
    std::filesystem::create_directories(folder, failed);
    Walk walk(gallery, window, folder);
    const struct {
        const char* language;
        bool isDark;
    } looks[] = {{"en", false}, {"ar", false}, {"fr", false}, {"en", true}, {"ar", true}};
    for (const auto& look : looks) {
        walk.inLanguage(look.language, look.isDark);
        walk.login();
        walk.screens();
        walk.panes();
    }
    return walk.fault();
}

}  // namespace torvel::gallery
