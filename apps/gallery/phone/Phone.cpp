#include "gallery/phone/Phone.h"

#include "TorvelPlatform/dispatch/DispatchQueue.h"
#include "TorvelPlatform/foundation/ScreenEnvironment.h"
#include "TorvelPlatform/uikit/qt/UINavigationController.h"
#include "TorvelPlatform/uikit/qt/UITabBarController.h"
#include "gallery/kit/Images.h"
#include "gallery/phone/Screen.h"

#include <QPainter>
#include <QPainterPath>
#include <QToolButton>

namespace torvel::gallery {
namespace {

constexpr int bezel = 12;
constexpr int screenRadius = 36;
constexpr int statusHeight = 40;

// Covers the corners of the screen, which are square as all widgets are.
class Frame final : public QWidget {
  public:
    explicit Frame(QWidget* phone) : QWidget(phone) { setAttribute(Qt::WA_TransparentForMouseEvents); }

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor ink(0x12, 0x12, 0x1E);
        QPainterPath path;
        path.setFillRule(Qt::OddEvenFill);
        path.addRoundedRect(rect(), screenRadius + bezel, screenRadius + bezel);
        path.addRoundedRect(rect().adjusted(bezel, bezel, -bezel, -bezel), screenRadius, screenRadius);
        const bool isDark = ScreenEnvironment::style == ScreenEnvironment::Style::dark;
        painter.fillPath(path, isDark ? QColor(0x30, 0x32, 0x56) : ink);
        QPainterPath corners;
        corners.addRect(rect());
        QPainterPath body;
        body.addRoundedRect(rect(), screenRadius + bezel, screenRadius + bezel);
        painter.fillPath(corners.subtracted(body), color(&ColorDAO::backgroundColor));
        painter.setPen(Qt::NoPen);
        painter.setBrush(ink);
        painter.drawRoundedRect(QRectF(width() / 2.0 - 48, bezel + 8, 96, 22), 11, 11);
    }
};

// The screen's own background.
class Glass final : public QWidget {
  public:
    using QWidget::QWidget;

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(rect(), color(&ColorDAO::circleLightBackgroundColor));
    }
};

// The icon as the image that bars take.
UIImage iconImage(Icon icon, const QColor& ink) {
    QImage image(48, 48, QImage::Format_ARGB32);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    drawIcon(painter, icon, QRectF(0, 0, 48, 48), ink);
    painter.end();
    return toUIImage(image, 2);
}

constexpr struct {
    Tab tab;
    const char* title;
    Icon icon;
    std::shared_ptr<Screen> (*make)(Gallery&);
} tabs[] = {
    {Tab::home, "tab_home", Icon::home, makeHomeScreen},
    {Tab::send, "tab_send", Icon::send, makeTransferScreen},
    {Tab::card, "tab_card", Icon::card, makeCardScreen},
    {Tab::statement, "tab_statement", Icon::list, makeStatementScreen},
    {Tab::settings, "tab_settings", Icon::gear, makeSettingsScreen},
};

// The chosen screen's icon stands out.
void colourTabs(UITabBarController& bar) {
    for (std::size_t i = 0; i < std::size(tabs); ++i) {
        const Role ink = bar.selectedIndex() == i ? &ColorDAO::primaryColor : &ColorDAO::secondaryTextColor;
        bar.children()[i]->tabBarItem().setImage(iconImage(tabs[i].icon, color(ink)));
    }
}

QString named(Role role) { return color(role).name(); }

// The bar's buttons are the toolkit's own; they take the theme and its fonts here.
void dressTabBar(QWidget& view) {
    view.setStyleSheet(QString("#tabBar { background: %1; border-top: 1px solid %2; }"
                               "#tabBarButton { border: none; padding: 8px 0 12px 0; color: %3; }"
                               "#tabBarButton:checked { color: %4; }")
                           .arg(named(&ColorDAO::surfaceColor), named(&ColorDAO::secondaryBackgroundColor),
                                named(&ColorDAO::secondaryTextColor), named(&ColorDAO::primaryColor)));
    for (auto* const button : view.findChildren<QToolButton*>("tabBarButton"))
        button->setFont(type::caption());
}

void dressNavigationBar(QWidget& view) {
    view.setStyleSheet(QString("#navigationBack { color: %1; } #navigationTitle { color: %2; }")
                           .arg(named(&ColorDAO::primaryColor), named(&ColorDAO::regularTextColor)));
    view.findChild<QLabel*>("navigationTitle")->setFont(type::strong());
}

}  // namespace

Phone::Phone(Gallery& gallery) : m_gallery(gallery), m_screen(new Glass(this)) {
    setFixedSize(phoneWidth + 2 * bezel, phoneHeight + 2 * bezel);
    m_screen->setGeometry(bezel, bezel, phoneWidth, phoneHeight);
    column(m_screen)->setContentsMargins(0, statusHeight, 0, 0);
    showScreens();
    auto* const frame = new Frame(this);
    frame->resize(size());
    frame->raise();
}

Phone::~Phone() = default;

void Phone::refresh() {
    if (m_showsLogin == m_gallery.wallet.isLoggedIn()) return showScreens();
    m_root->updateTheme();
}

void Phone::showScreens() {
    m_showsLogin = !m_gallery.wallet.isLoggedIn();
    m_root = m_showsLogin ? makeLogin() : makeTabs();
    m_screen->layout()->addWidget(m_root->view());
}

std::shared_ptr<UIViewController> Phone::makeLogin() {
    const auto login = makeLoginScreen(m_gallery);
    const auto navigation = std::make_shared<UINavigationController>(login);
    if (m_gallery.isSettingsPushed) {
        const auto settings = makeSettingsScreen(m_gallery);
        settings->navigationItem().setTitle(text("settings_title").toStdString());
        navigation->pushViewController(settings);
    }
    login->appeared = [this, bar = navigation.get()] {
        m_gallery.isSettingsPushed = false;
        bar->setNavigationBarHidden(true);
    };
    dressNavigationBar(*navigation->view());
    return navigation;
}

std::shared_ptr<UIViewController> Phone::makeTabs() {
    const auto bar = std::make_shared<UITabBarController>();
    std::vector<std::shared_ptr<UIViewController>> screens;
    for (const auto& tab : tabs) {
        const auto screen = tab.make(m_gallery);
        screen->tabBarItem().setTitle(text(tab.title).toStdString());
        screen->appeared = [this, weak = std::weak_ptr(bar), chosen = tab.tab] {
            m_gallery.noteTab(chosen);
            DispatchQueue::main().async([weak] {
                if (const auto alive = weak.lock()) colourTabs(*alive);
            });
        };
        screens.push_back(screen);
    }
    bar->setViewControllers(screens);
    bar->setSelectedIndex(std::size_t(m_gallery.tab()));
    colourTabs(*bar);
    dressTabBar(*bar->view());
    return bar;
}

}  // namespace torvel::gallery
