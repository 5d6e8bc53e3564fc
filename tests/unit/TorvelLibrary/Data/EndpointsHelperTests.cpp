#include "TorvelLibrary/Data/Local/EndpointsHelper.h"
#include "TorvelTesting/HostFixture.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

using ::testing::HasSubstr;

constexpr char table[] = "<plist><dict><key>login</key><string>v1/login</string></dict></plist>";

struct Endpoints : testing::HostFixture {
    static std::optional<std::string> optional(std::string_view id) {
        return EndpointsHelper::getEndPoint<std::optional<std::string>>(id);
    }
    static std::string text(std::string_view id) { return EndpointsHelper::getEndPoint<std::string>(id); }
};

TEST_F(Endpoints, AnswersInBothForms) {
    addResource("EndpointsConfig.plist", table);
    EXPECT_EQ(EndpointsHelper::instance(), nullptr);
    EXPECT_EQ(optional("login"), "v1/login");
    EXPECT_EQ(text("login"), "v1/login");
    EXPECT_EQ(optional("Login"), std::nullopt);
    EXPECT_EQ(text("Login"), "Login");
}

TEST_F(Endpoints, AMissingFileIsLoggedOnceAndNotLookedForAgain) {
    EXPECT_THAT(logOf([] { EXPECT_EQ(optional("login"), std::nullopt); }),
                HasSubstr("EndpointsConfig plist Not Found In App\n"));
    addResource("EndpointsConfig.plist", table);
    EXPECT_EQ(logOf([] { EXPECT_EQ(text("login"), "login"); }), "");
}

TEST_F(Endpoints, AnotherFileReplacesKeepsOrErasesTheTable) {
    const struct {
        const char* name;
        std::string content;
        std::optional<std::string> login;
        const char* logged;
    } rows[] = {
        {"another table", "{ login = v2; }", "v2", ""},
        {"empty table", "<plist><dict/></plist>", std::nullopt, ""},
        {"a list among texts", "{ login = v; n = (); }", std::nullopt, ""},
        {"root is an array", "<plist><array/></plist>", std::nullopt, ""},
        {"not a property list", "<plist><dict>", "v1/login", "line 1"},
    };
    addResource("EndpointsConfig.plist", table);
    EXPECT_EQ(optional("login"), "v1/login");
    const auto helper = EndpointsHelper::instance();
    const URL original = URL::file((directory() / "EndpointsConfig.plist").string());
    for (const auto& row : rows) {
        helper->setEndPointsPlist(original);
        const URL other = URL::file(addResource("Other.plist", row.content).string());
        const std::string log = logOf([&] { helper->setEndPointsPlist(other); });
        EXPECT_EQ(optional("login"), row.login) << row.name;
        EXPECT_THAT(log, HasSubstr(row.logged)) << row.name;
        EXPECT_EQ(log.empty(), *row.logged == 0) << row.name;
    }
    helper->setEndPointsPlist(original);
    EXPECT_NE(logOf([&] { helper->setEndPointsPlist(URL::file("/absent")); }), "");
    EXPECT_EQ(optional("login"), "v1/login");
}

}  // namespace
}  // namespace torvel
