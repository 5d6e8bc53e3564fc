#include "TorvelLibrary/navigation/AppRouter.h"
#include "gallery/panes/Panes.h"

#include <QLineEdit>

namespace torvel::gallery {
namespace {

QWidget* routeRow(Gallery& gallery, const Route& route) {
    auto* const made = new QWidget;
    QHBoxLayout* const line = row(1.5 * grid);
    made->setLayout(line);
    line->addWidget(new IconTile(route.isProtected ? Icon::lock : Icon::unlock, &ColorDAO::circlePrimaryColor,
                                 &ColorDAO::circleSecondaryBackgroundColor, 32));
    line->addWidget(label(ltr(route.path), type::strong()));
    line->addWidget(label(text(route.isProtected ? "route_protected" : "route_open"), type::caption(),
                          &ColorDAO::secondaryTextColor),
                    1);
    if (gallery.waiting == route.path)
        line->addWidget(new Badge(text("route_waits"), &ColorDAO::circlePendingStatusColor));
    if (gallery.routed == route.path)
        line->addWidget(new Badge(text("route_shown"), &ColorDAO::circleAcceptColor));
    line->addWidget(new Pill(text("route_go"), Pill::Look::tonal, [&gallery, path = std::string(route.path)] {
        openURL(gallery, "app://wallet" + path);
    }));
    return made;
}

QWidget* sessionCard(Gallery& gallery) {
    auto* const card = new Card(&ColorDAO::secondaryBackgroundColor);
    QHBoxLayout* const line = row(1.5 * grid);
    const bool isIn = AppRouter::sharedInstance()->isAuthenticated();
    line->addWidget(new IconTile(Icon::key, &ColorDAO::primaryColor, &ColorDAO::surfaceColor));
    QVBoxLayout* const words = column(nullptr, 2);
    words->addWidget(label(text(isIn ? "route_authenticated" : "route_anonymous"), type::strong()));
    const QString waiting = gallery.waiting.empty() ? text("route_none_waits")
                                                    : text("route_pending", ltr(toQt(gallery.waiting)));
    words->addWidget(wrapped(label(waiting, type::caption(), &ColorDAO::secondaryTextColor)));
    line->addLayout(words, 1);
    line->addWidget(
        new Pill(text(isIn ? "settings_logout" : "login_button"), Pill::Look::plain, [&gallery, isIn] {
            if (isIn)
                gallery.wallet.logOut();
            else
                gallery.wallet.logIn(sandbox::walletNumber, sandbox::walletPin);
        }));
    card->content->addLayout(line);
    return card;
}

}  // namespace

QWidget* makeRouterPane(Gallery& gallery) {
    auto* const pane = new QWidget;
    QVBoxLayout* const lines = column(pane, 2 * grid);
    lines->addWidget(wrapped(label(text("router_about"), type::body(), &ColorDAO::secondaryTextColor)));
    auto* const console = new Card;
    auto* const field = new Field(text("route_url"), gallery.drafts.consoleURL, [] {});
    field->configured("route_url", 200)->edit().setFont(type::code());
    field->edit().setAlignment(Qt::AlignLeft | Qt::AlignAbsolute);
    if (gallery.isUnknown) field->say(text("route_unknown"), Field::Tone::bad);
    auto* const go = new Pill(text("route_go"), Pill::Look::filled,
                              [&gallery] { openURL(gallery, gallery.drafts.consoleURL); });
    go->setObjectName("route_go");
    console->content->addWidget(field);
    console->content->addWidget(go);
    lines->addWidget(console);
    lines->addWidget(sessionCard(gallery));
    auto* const table = new Card;
    for (const Route& route : routes) table->content->addWidget(routeRow(gallery, route));
    lines->addWidget(table);
    lines->addStretch();
    return pane;
}

}  // namespace torvel::gallery
