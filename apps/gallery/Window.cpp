#include "gallery/Window.h"

#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/Views.h"
#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "gallery/kit/Card.h"
#include "gallery/kit/Controls.h"
#include "gallery/panes/Panes.h"
#include "gallery/phone/Phone.h"

#include <QPainter>
#include <QPointer>

namespace torvel::gallery {
namespace {

constexpr int sidebarWidth = 208;
constexpr int paneWidth = 640;

struct PaneEntry {
    Pane pane;
    const char* title;
    Icon icon;
    std::function<QWidget*(Gallery&)> make;
};

const std::vector<PaneEntry>& panes() {
    static const std::vector<PaneEntry> entries = {
        {Pane::theme, "pane_theme", Icon::palette, [](Gallery&) { return makeThemePane(); }},
        {Pane::type, "pane_type", Icon::type, makeTypePane},
        {Pane::fonts, "pane_fonts", Icon::font, makeFontsPane},
        {Pane::images, "pane_images", Icon::image, makeImagesPane},
        {Pane::amounts, "pane_amounts", Icon::coins, makeAmountsPane},
        {Pane::router, "pane_router", Icon::route, makeRouterPane},
        {Pane::network, "pane_network", Icon::network, makeNetworkPane},
        {Pane::store, "pane_store", Icon::store, makeStorePane},
        {Pane::log, "pane_log", Icon::log, makeLogPane},
    };
    return entries;
}

}  // namespace

Window::Window(Gallery& gallery) : m_gallery(gallery) {
    setWindowTitle("Torvel Gallery");
    column(this);
    gallery.rebuild = [window = QPointer(this)] {
        DispatchQueue::main().async([window] {
            if (window) window->rebuild();
        });
    };
    gallery.refresh = [this] {
        m_phone->refresh();
        showPane();
    };
    gallery.refreshPane = [this] { showPane(); };
    m_logTimer.setSingleShot(true);
    m_logTimer.callOnTimeout(this, [this] { showPane(); });
    gallery.logged = [this] {
        if (m_gallery.pane() == Pane::log && !m_logTimer.isActive()) m_logTimer.start(100);
    };
    rebuild();
}

Window::~Window() {
    m_gallery.rebuild = m_gallery.refresh = m_gallery.refreshPane = m_gallery.logged = [] {};
}

void Window::rebuild() {
    if (m_content) {
        m_content->hide();
        m_content->deleteLater();
    }
    auto* const inner = new QWidget;
    auto* const line = row(3 * grid);
    inner->setLayout(line);
    line->setContentsMargins(3 * grid, 3 * grid, 3 * grid, 3 * grid);
    line->addWidget(makeSidebar());
    m_phone = new Phone(m_gallery);
    line->addWidget(m_phone, 0, Qt::AlignTop);
    m_paneHolder = new QWidget;
    m_paneHolder->setMinimumWidth(paneWidth);
    column(m_paneHolder);
    line->addWidget(m_paneHolder, 1);
    showPane();
    QScrollArea* const area = scrolling(inner);  // for screens that are smaller than this
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_content = area;
    layout()->addWidget(m_content);
    update();
}

QWidget* Window::makeSidebar() {
    auto* const card = new Card;
    card->setFixedWidth(sidebarWidth);
    card->content->setSpacing(4);
    card->content->addWidget(label("Torvel", type::title()));
    card->content->addWidget(
        wrapped(label(text("gallery_about"), type::caption(), &ColorDAO::secondaryTextColor)));
    card->content->addSpacing(2 * grid);
    for (const PaneEntry& entry : panes())
        card->content->addWidget(new NavigationRow(entry.icon, text(entry.title),
                                                   entry.pane == m_gallery.pane(),
                                                   [this, pane = entry.pane] { m_gallery.open(pane); }));
    card->content->addStretch();
    for (const Language& language : languages) {
        const bool isChosen = LocaleHelper::currentAppleLanguage() == language.code;
        card->content->addWidget(new NavigationRow(Icon::globe, language.name, isChosen, [this, &language] {
            m_gallery.setLanguage(language.code);
        }));
    }
    const bool isDark = m_gallery.isDark();
    card->content->addWidget(new NavigationRow(isDark ? Icon::sun : Icon::moon,
                                               text(isDark ? "theme_light" : "theme_dark"), false,
                                               [this, isDark] { m_gallery.setDark(!isDark); }));
    return card;
}

void Window::showPane() {
    while (QLayoutItem* const item = m_paneHolder->layout()->takeAt(0)) {
        item->widget()->hide();
        item->widget()->deleteLater();
        delete item;
    }
    for (const PaneEntry& entry : panes()) {
        if (entry.pane != m_gallery.pane()) continue;
        auto* const pane = new QWidget;
        QVBoxLayout* const lines = column(pane, 2 * grid);
        lines->addWidget(label(text(entry.title), type::title()));
        lines->addWidget(entry.make(m_gallery), 1);
        lines->setContentsMargins(isRTL() ? 2 * grid : 0, 0, isRTL() ? 0 : 2 * grid,
                                  0);  // beside the scroll bar
        m_paneHolder->layout()->addWidget(scrolling(pane));
    }
}

void Window::paintEvent(QPaintEvent*) { QPainter(this).fillRect(rect(), color(&ColorDAO::backgroundColor)); }

}  // namespace torvel::gallery
