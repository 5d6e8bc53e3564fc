#include "gallery/Gallery.h"

#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelLibrary/Utils/UserStorageHelper.h"
#include "TorvelLibrary/navigation/AppRouter.h"

namespace torvel::gallery {
namespace {

constexpr char themeKey[] = "gallery_dark_theme";

void waits(Gallery& gallery, const Route& route) {
    gallery.waiting = route.path;
    gallery.refresh();
}

}  // namespace

Gallery::Gallery(const Host& host)
    : wallet(host.backend(), [this] { refresh(); }),
      m_isDark(UserStorageHelper::boolValue(themeKey).value_or(false)) {
    LogUtils::setLoggingEnabled(true);
    useLanguage(LocaleHelper::currentAppleLanguage());
    useTheme(m_isDark);
    registerRoutes();
}

void Gallery::setLanguage(const std::string& language) {
    useLanguage(language);
    LogUtils::i("language " + language);
    rebuild();
}

void Gallery::setDark(bool dark) {
    m_isDark = dark;
    UserStorageHelper::save(dark, themeKey);
    useTheme(dark);
    LogUtils::i(dark ? "dark theme" : "light theme");
    rebuild();
}

void Gallery::open(Pane pane) {
    m_pane = pane;
    rebuild();
}

void Gallery::open(Tab tab) {
    wallet.forgetFault();
    m_tab = tab;
    rebuild();
}

void Gallery::registerRoutes() {
    for (const Route& route : routes) {
        const auto open = [this, route](const std::optional<PayloadDictionary>& payload) {
            routed = route.path;
            if (waiting == route.path) waiting.clear();
            if (route.tab == Tab::send) {
                drafts.to = payload->get<std::string>("to").value_or(drafts.to);
                drafts.amount = payload->get<std::string>("amount").value_or(drafts.amount);
            }
            isSettingsPushed = route.tab == Tab::settings && !wallet.isLoggedIn();
            this->open(route.tab);
        };
        AppRouter::Builder(route.path, open).isAuthRequired(route.isProtected).build();
    }
}

void openURL(Gallery& gallery, const std::string& url) {
    gallery.routed.clear();
    gallery.isUnknown = false;
    AppRouter::sharedInstance()->route(url);
    if (!gallery.routed.empty()) return;
    for (const Route& route : routes)
        if (path(url) == route.path) return waits(gallery, route);  // it is known
    gallery.isUnknown = true;
    gallery.refresh();
}

}  // namespace torvel::gallery
