#include "TorvelLibrary/Utils/LocaleHelper.h"
#include "TorvelLibrary/Utils/Views.h"
#include "TorvelPlatform/uikit/qt/QtHost.h"
#include "TorvelPlatform/uikit/qt/UIApplication.h"
#include "TorvelPlatform/uikit/qt/UINavigationController.h"
#include "TorvelPlatform/uikit/qt/UITabBarController.h"
#include "TorvelPlatform/uikit/qt/UITextField.h"
#include "TorvelTesting/HostFixture.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

// Types of a host, in a module of its own.
namespace wallet {

class Badge : public QLabel {};

class LoginScreen : public torvel::UIViewController {
  public:
    using UIViewController::UIViewController;
    void viewDidLoad() override { ++loads; }
    void updateTheme() override { ++themes; }
    int loads = 0, themes = 0;
};

TORVEL_TYPE(Wallet, Badge)
TORVEL_TYPE(Wallet, LoginScreen)

}  // namespace wallet

namespace torvel {
namespace {

using wallet::LoginScreen;

std::string interfaceFile(const std::string& widgets) {
    return R"(<ui version="4.0"><class>LoginScreen</class><widget class="QWidget" name="LoginScreen">)" +
           widgets +
           "</widget><customwidgets><customwidget><class>Badge</class><extends>QLabel</extends></"
           "customwidget>"
           "</customwidgets></ui>";
}

class ViewsTest : public testing::HostFixture {
  protected:
    ViewsTest() { connectToQt(); }
};

TEST_F(ViewsTest, InterfaceFilesAreNamedLikeTypesAndTheMainBundlesCountFirst) {
    EXPECT_EQ(reuseIdentifier<LoginScreen>, "LoginScreen");
    addResource("Wallet.bundle/LoginScreen.ui", interfaceFile(R"(<widget class="QLineEdit" name="own"/>)"));
    EXPECT_EQ(getNib<LoginScreen>().bundle().directory().filename(), "Wallet.bundle");
    const auto inside = instantiate<LoginScreen>();
    EXPECT_EQ(inside->loads, 0);
    EXPECT_TRUE(inside->view()->findChild<QLineEdit*>("own"));

    addResource("LoginScreen.ui", interfaceFile(R"(<widget class="Badge" name="badge"/>)"));
    const auto plain = instantiate<LoginScreen>();
    EXPECT_TRUE(plain->view()->findChild<QLabel*>("badge"));
    EXPECT_FALSE(dynamic_cast<wallet::Badge*>(plain->view()->findChild<QLabel*>("badge")));
    registerView<wallet::Badge>();
    const auto screen = instantiate<LoginScreen>();
    EXPECT_TRUE(dynamic_cast<wallet::Badge*>(screen->view()->findChild<QLabel*>("badge")));
    EXPECT_EQ(screen->view(), screen->view());
    EXPECT_EQ(screen->loads, 1);
}

TEST_F(ViewsTest, AnInterfaceFileThatCannotBeUsedIsReportedAndLeavesAnEmptyView) {
    const struct {
        const char* name;
        std::string file;
        const char* reason;
    } rows[] = {
        {"none", "", "There is no interface file"},
        {"no XML", "text", "cannot be used"},
        {"cut short", interfaceFile("").substr(0, 90), "cannot be used"},
        {"unknown class", R"(<ui version="4.0"><widget class="Nothing" name="n"/></ui>)", "cannot be used"}};
    for (const auto& [name, file, reason] : rows) {
        if (!file.empty()) addResource("LoginScreen.ui", file);
        const auto screen = instantiate<LoginScreen>();
        const std::string log = logOf([&] { EXPECT_TRUE(screen->view()->children().empty()) << name; });
        EXPECT_NE(log.find(reason), log.npos) << name << log;
        EXPECT_EQ(screen->loads, 1) << name;
    }
    EXPECT_EQ(nibNamed("../secret", Bundle::main()).instantiate(), nullptr);
}

TEST_F(ViewsTest, OnlyViewsMadeAfterAChangeOfLanguageTakeItsDirection) {
    EXPECT_FALSE(isRTL());
    QWidget old;
    auto* const oldChild = new QLabel(&old);
    auto* const fixed = new QWidget(&old);
    fixed->setLayoutDirection(Qt::LeftToRight);
    old.show();
    LocaleHelper::setAppleLanguageTo("ar-EG");
    EXPECT_TRUE(isRTL());
    QWidget later;
    auto* const laterChild = new QLabel(&later);
    later.show();
    auto* const added = new QLabel(&old);
    auto* const inFixed = new QLabel(fixed);
    for (QWidget* const view : {added, inFixed}) view->show();
    const struct {
        const char* name;
        const QWidget* view;
        bool mirrored;
    } rows[] = {{"old", &old, false},        {"its child", oldChild, false},
                {"new", &later, true},       {"its child", laterChild, true},
                {"new in old", added, true}, {"new in one that is fixed", inFixed, false}};
    const auto expectAll = [&] {
        for (const auto& [name, view, mirrored] : rows)
            EXPECT_EQ(view->layoutDirection() == Qt::RightToLeft, mirrored) << name;
    };
    expectAll();
    LocaleHelper::setAppleLanguageTo("fr");
    EXPECT_FALSE(isRTL());
    for (QWidget* const view : {&old, &later}) view->hide(), view->show();
    expectAll();
}

TEST_F(ViewsTest, AFieldsTextIsWhatStandsThere) {
    QLineEdit field;
    EXPECT_EQ(getRawValue(field), "");
    setPrepopulatedText(field, " 0 712-\xD9\xA3 ");
    EXPECT_EQ(getRawValue(field), " 0 712-\xD9\xA3 ");
}

template <class Controller = LoginScreen, class... Arguments>
std::shared_ptr<Controller> make(Arguments... arguments) {
    return std::make_shared<Controller>(arguments...);
}

TEST_F(ViewsTest, TheTopScreenIsFollowedThroughContainers) {
    const auto screen = make(), above = make();
    const auto navigation = make<UINavigationController>(screen);
    const auto tabs = make<UITabBarController>();
    const auto top = [&] { return UIApplication::getTopViewController(tabs.get()); };
    EXPECT_EQ(UIApplication::getTopViewController(nullptr), nullptr);
    EXPECT_EQ(UIApplication::getTopViewController(make<UINavigationController>().get()), nullptr);
    EXPECT_EQ(top(), tabs.get());
    tabs->setViewControllers({make(), navigation});
    EXPECT_EQ(top(), tabs->children()[0].get());
    tabs->setSelectedIndex(1);
    EXPECT_EQ(top(), screen.get());
    navigation->pushViewController(above);
    EXPECT_EQ(top(), above.get());
    EXPECT_EQ(navigation->popViewController(), above);
    EXPECT_EQ(navigation->popViewController(), nullptr);
    EXPECT_EQ(top(), screen.get());
    tabs->setSelectedIndex(2);
    EXPECT_EQ(tabs->selectedIndex(), std::nullopt);
    EXPECT_EQ(top(), tabs.get());
}

TEST_F(ViewsTest, TheNavigationItemIsThatOfThePartOfTheNavigationController) {
    const auto part = make(), inner = make(), outer = make(), alone = make();
    inner->addChild(part);
    outer->addChild(inner);
    const auto navigation = make<UINavigationController>(outer);
    const struct {
        const char* name;
        UIViewController& of;
        UIViewController& item;
    } rows[] = {{"alone", *alone, *alone},
                {"a part of a part", *part, *outer},
                {"a part of a screen", *inner, *outer},
                {"a screen", *outer, *navigation},
                {"the navigation controller", *navigation, *navigation}};
    for (const auto& row : rows) EXPECT_EQ(&row.of.navItem(), &row.item.navigationItem()) << row.name;
    alone->addChild(part);
    EXPECT_EQ(&part->navItem(), &alone->navigationItem());
    EXPECT_EQ(inner->children().size(), 0u);
    EXPECT_DEATH(outer->addChild(navigation), "cannot contain itself");
    EXPECT_DEATH(outer->addChild(outer), "cannot contain itself");
}

TEST_F(ViewsTest, ContainersShowTheirScreensAndBars) {
    const auto home = make(), more = make();
    const auto navigation = make<UINavigationController>(home);
    const auto tabs = make<UITabBarController>();
    tabs->setViewControllers({navigation, more});
    navigation->tabBarItem().setTitle("Home");
    QWidget& window = *tabs->view();
    window.resize(390, 844);
    window.show();
    const auto buttons = window.findChildren<QAbstractButton*>("tabBarButton");
    auto* const title = window.findChild<QLabel*>("navigationTitle");
    auto* const back = window.findChild<QAbstractButton*>("navigationBack");
    ASSERT_EQ(buttons.size(), 2);
    EXPECT_EQ(buttons[0]->text(), "Home");
    EXPECT_TRUE(home->view()->isVisible() && !back->isVisible() && buttons[0]->isChecked());
    EXPECT_EQ(more->loads, 0);

    home->navigationItem().setTitle("Balance");
    EXPECT_EQ(title->text(), "Balance");
    auto pushed = make();
    // A screen that its own button ends, together with its last owner.
    auto* const done = new QPushButton(pushed->view());
    QObject::connect(done, &QPushButton::clicked, done, [&] { navigation->popViewController(); });
    navigation->pushViewController(std::move(pushed));
    EXPECT_TRUE(back->isVisible() && !home->view()->isVisible());
    EXPECT_EQ(title->text(), "");
    done->click();
    EXPECT_TRUE(home->view()->isVisible() && !back->isVisible());
    navigation->pushViewController(make());
    back->click();
    EXPECT_EQ(UIApplication::getTopViewController(tabs.get()), home.get());

    buttons[1]->click();
    buttons[1]->click();
    EXPECT_TRUE(more->view()->isVisible() && buttons[1]->isChecked() && !home->view()->isVisible());
    tabs->setSelectedIndex({});
    EXPECT_FALSE(more->view()->isVisible() || buttons[1]->isChecked() || buttons[0]->isChecked());
    navigation->setNavigationBarHidden(true);
    tabs->setViewControllers({more, navigation, make()});
    EXPECT_EQ(window.findChildren<QAbstractButton*>("tabBarButton").size(), 3);
    EXPECT_TRUE(more->view()->isVisible());
    tabs->setSelectedIndex(1);
    EXPECT_FALSE(title->isVisible());
    tabs->updateTheme();
    EXPECT_EQ(home->themes + more->themes, 2);
}

}  // namespace
}  // namespace torvel
