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

// Types of a host, in a module of its own.
namespace wallet {

class Badge : public QLabel {};

struct LoginScreen : torvel::UIViewController {
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
           "</widget><customwidgets><customwidget><class>Badge</class><extends>QLabel</extends>"
           "</customwidget></customwidgets></ui>";
}

template <class Controller = LoginScreen, class... Arguments>
std::shared_ptr<Controller> make(Arguments... arguments) {
    return std::make_shared<Controller>(arguments...);
}

struct ViewsTest : testing::HostFixture {
    ViewsTest() { connectToQt(); }
};

TEST_F(ViewsTest, InterfaceFilesAreNamedLikeTypesAndTheMainBundlesCountFirst) {
    EXPECT_EQ(reuseIdentifier<LoginScreen>, "LoginScreen");
    addResource("Wallet.bundle/LoginScreen.ui", interfaceFile(R"(<widget class="QLineEdit" name="own"/>)"));
    EXPECT_EQ(getNib<LoginScreen>().bundle().directory().filename(), "Wallet.bundle");
    const auto inside = instantiate<LoginScreen>();
    EXPECT_EQ(inside->loads, 0);
    auto* const field = inside->view()->findChild<QLineEdit*>("own");
    EXPECT_EQ(getRawValue(*field), "");
    setPrepopulatedText(*field, " 0 712-\xD9\xA3 ");
    EXPECT_EQ(getRawValue(*field), " 0 712-\xD9\xA3 ");

    addResource("LoginScreen.ui", interfaceFile(R"(<widget class="Badge" name="badge"/>)"));
    for (const bool isKnown : {false, true}) {
        if (isKnown) registerView<wallet::Badge>();
        const auto screen = instantiate<LoginScreen>();
        auto* const label = screen->view()->findChild<QLabel*>("badge");
        EXPECT_TRUE(label && (dynamic_cast<wallet::Badge*>(label) != nullptr) == isKnown);
        EXPECT_TRUE(screen->view() == screen->view() && screen->loads == 1);
    }
}

TEST_F(ViewsTest, AnInterfaceFileThatCannotBeUsedIsReportedAndLeavesAnEmptyView) {
    const std::string unknown = R"(<ui version="4.0"><widget class="Nothing" name="n"/></ui>)";
    for (const std::string& file :
         {std::string(), std::string("text"), unknown, interfaceFile("").substr(0, 90)}) {
        if (!file.empty()) addResource("LoginScreen.ui", file);
        const auto screen = instantiate<LoginScreen>();
        const std::string log = logOf([&] { EXPECT_TRUE(screen->view()->children().empty()) << file; });
        EXPECT_NE(log.find(file.empty() ? "There is no interface file" : "cannot be used"), log.npos) << log;
        EXPECT_EQ(screen->loads, 1) << file;
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
    EXPECT_EQ(make()->view()->layoutDirection(), Qt::RightToLeft);
    QWidget later;
    auto* const laterChild = new QLabel(&later);
    later.show();
    auto *const added = new QLabel(&old), *const inFixed = new QLabel(fixed);
    for (QWidget* const view : {added, inFixed}) view->show();
    const auto expectAll = [&] {
        for (const QWidget* const view : std::initializer_list<QWidget*>{&old, oldChild, inFixed})
            EXPECT_EQ(view->layoutDirection(), Qt::LeftToRight);
        for (const QWidget* const view : std::initializer_list<QWidget*>{&later, laterChild, added})
            EXPECT_EQ(view->layoutDirection(), Qt::RightToLeft);
    };
    expectAll();
    LocaleHelper::setAppleLanguageTo("fr");
    EXPECT_FALSE(isRTL());
    for (QWidget* const view : {&old, &later}) view->hide(), view->show();
    expectAll();
    old.setLayoutDirection(Qt::RightToLeft);  // the host's own choice holds for later children
    auto* const last = new QLabel(&old);
    last->show();
    EXPECT_EQ(last->layoutDirection(), Qt::RightToLeft);
}

TEST_F(ViewsTest, TheTopScreenIsFollowedThroughContainers) {
    const auto screen = make(), above = make(), beside = make();
    const auto navigation = make<UINavigationController>(screen);
    const auto tabs = make<UITabBarController>();
    const auto top = [&] { return UIApplication::getTopViewController(tabs.get()); };
    EXPECT_EQ(UIApplication::getTopViewController(make<UINavigationController>().get()), nullptr);
    EXPECT_EQ(top(), tabs.get());
    tabs->setViewControllers({beside, navigation});
    EXPECT_EQ(top(), beside.get());
    tabs->setSelectedIndex(1);
    navigation->pushViewController(above);
    for (const auto& [seen, popped] : {std::pair{above, above}, {screen, nullptr}}) {
        EXPECT_EQ(top(), seen.get());
        EXPECT_EQ(navigation->popViewController(), popped);
    }
    tabs->setSelectedIndex(2);
    EXPECT_EQ(top(), tabs.get());
}

TEST_F(ViewsTest, TheNavigationItemIsThatOfThePartOfTheNavigationController) {
    const auto part = make(), inner = make(), outer = make(), alone = make();
    inner->addChild(part);
    outer->addChild(inner);
    const auto navigation = make<UINavigationController>(outer);
    const std::pair<UIViewController*, UIViewController*> itemsOf[] = {{alone.get(), alone.get()},
                                                                       {part.get(), outer.get()},
                                                                       {inner.get(), outer.get()},
                                                                       {outer.get(), navigation.get()}};
    for (const auto& [of, owner] : itemsOf) EXPECT_EQ(&of->navItem(), &owner->navigationItem());
    alone->addChild(part);
    EXPECT_EQ(&part->navItem(), &alone->navigationItem());
    EXPECT_EQ(inner->children().size(), 0u);
    for (const auto& itself : {std::shared_ptr<UIViewController>(navigation), {outer}})
        EXPECT_DEATH(outer->addChild(itself), "cannot contain itself");
    EXPECT_DEATH(navigation->pushViewController(nullptr), "cannot contain nothing");
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
    home->navigationItem().setTitle("Balance");
    EXPECT_EQ(buttons[0]->text() + title->text(), "HomeBalance");
    EXPECT_TRUE(home->view()->isVisible() && !back->isVisible() && buttons[0]->isChecked() &&
                more->loads == 0);

    auto pushed = make();  // its own button ends it, together with its last owner
    auto* const done = new QPushButton(pushed->view());
    QObject::connect(done, &QPushButton::clicked, done, [&] { navigation->popViewController(); });
    navigation->pushViewController(std::move(pushed));
    EXPECT_TRUE(back->isVisible() && !home->view()->isVisible() && title->text().isEmpty());
    done->click();
    EXPECT_TRUE(home->view()->isVisible() && !back->isVisible());
    navigation->pushViewController(make());
    back->click();
    EXPECT_TRUE(home->view()->isVisible());

    for (const int times : {1, 2}) {
        buttons[1]->click();
        EXPECT_TRUE(more->view()->isVisible() && buttons[1]->isChecked() && !buttons[0]->isChecked())
            << times;
    }
    tabs->setSelectedIndex({});
    EXPECT_FALSE(more->view()->isVisible() || buttons[1]->isChecked());
    navigation->setNavigationBarHidden(true);
    tabs->setViewControllers({more, navigation, make()});
    EXPECT_EQ(window.findChildren<QAbstractButton*>("tabBarButton").size(), 3);
    EXPECT_TRUE(more->view()->isVisible());
    tabs->setSelectedIndex(1);
    EXPECT_TRUE(home->view()->isVisible() && !title->isVisible());
    tabs->updateTheme();
    EXPECT_EQ(home->themes + more->themes, 2);

    auto ended = make<UINavigationController>(make());
    ended->pushViewController(make());
    QWidget* const rest = ended->view();  // goes with the loop's next round
    ended.reset();
    rest->findChild<QAbstractButton*>("navigationBack")->click();
}

struct Nest : QLabel {
    Nest() { UINib("Inner", Bundle::main()).instantiate().release()->setParent(this); }
};

TEST_F(ViewsTest, AViewMayLoadAFileOfItsOwnWhileOneIsLoaded) {
    UINib::registerView("Nest", [] { return new Nest; });
    addResource("Inner.ui", R"(<ui version="4.0"><widget class="QWidget" name="inner"/></ui>)");
    addResource("LoginScreen.ui", R"(<ui version="4.0"><widget class="QWidget" name="LoginScreen">
        <widget class="QLabel" name="label"><property name="buddy"><cstring>field</cstring></property></widget>
        <widget class="Nest" name="nest"/><widget class="QLineEdit" name="field"/></widget></ui>)");
    const auto screen = instantiate<LoginScreen>();
    const auto* const label = screen->view()->findChild<QLabel*>("label");
    ASSERT_NE(label, nullptr);
    EXPECT_NE(label->buddy(), nullptr);
}

struct PopsItself : UIViewController {
    void viewDidLoad() override { navigationController()->popViewController(); }
};

TEST_F(ViewsTest, AScreenMayTakeItselfOffWhileItIsLoaded) {
    const auto home = make();
    const auto navigation = make<UINavigationController>(home);
    navigation->view();
    navigation->pushViewController(std::make_shared<PopsItself>());
    EXPECT_EQ(navigation->visibleViewController(), home.get());
}

}  // namespace
}  // namespace torvel
