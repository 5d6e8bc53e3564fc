#include "TorvelLibrary/navigation/AppRouter.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

using ::testing::ElementsAre;

std::vector<std::string> visited;

// Registers a route that notes its name and the entry "x" of its payload.
void add(const std::string& path, bool isProtected, const std::string& name) {
    AppRouter::Builder builder(path, [name](const std::optional<PayloadDictionary>& payload) {
        visited.push_back(name + payload->get<std::string>("x").value_or(""));
    });
    if (!isProtected) builder.isAuthRequired(false);
    builder.build();
}

// Every row starts with a new router that has the routes below. Its steps are texts to route to; "+" and "-"
// write true and false to isAuthenticated.
TEST(AppRouter, StatesOfThePendingTarget) {
    const struct {
        const char* name;
        std::vector<std::string> steps, visits;
    } rows[] = {
        {"open route", {"/open"}, {"open"}},
        {"whole URL with a query", {"scheme://host/open?x=1%202&y=3"}, {"open1 2"}},
        {"paths match exactly", {"/open/", "open", "/OPEN", "/unknown"}, {"relative"}},
        {"no URL goes by the empty path", {"not a url?x=1"}, {"empty"}},
        {"protected route waits", {"/a", "/b", "-"}, {}},
        {"authentication runs it", {"/a?x=1", "+"}, {"a1"}},
        {"the last one alone, once", {"/a", "/b", "+", "+", "-", "+"}, {"b"}},
        {"false leaves it waiting", {"/a", "-", "+"}, {"a"}},
        {"true with nothing waiting", {"+", "/a", "+"}, {"a"}},
        {"unknown and open routes leave it waiting", {"/a", "/unknown", "/open", "+"}, {"open", "a"}},
        {"false protects again", {"+", "-", "/a"}, {}},
    };
    for (const auto& row : rows) {
        AppRouter::setSharedInstance(nullptr);
        AppRouter::sharedInstance()->route("/a");  // nothing is registered: nothing waits
        for (const char* name : {"a", "b"}) add(std::string("/").append(name), true, name);
        add("/open", true, "replaced");
        add("/open", false, "open");
        add("open", false, "relative");
        add("", false, "empty");
        visited.clear();
        for (const std::string& step : row.steps) {
            if (step == "+" || step == "-")
                AppRouter::sharedInstance()->setAuthenticated(step == "+");
            else
                AppRouter::sharedInstance()->route(step);
        }
        EXPECT_EQ(visited, row.visits) << row.name;
    }
}

TEST(AppRouter, PayloadsPassUnchanged) {
    std::optional<PayloadDictionary> seen;
    AppRouter::Builder("/a", [&seen](const auto& payload) { seen = payload; }).isAuthRequired(false).build();
    PayloadDictionary payload;
    payload.set(7, 1.5);
    AppRouter::sharedInstance()->route("/a?x=1", payload);
    EXPECT_EQ(seen->get<double>(7), 1.5);
    EXPECT_FALSE(seen->contains("x"));
    AppRouter::sharedInstance()->route("/a?x=1", PayloadDictionary());
    EXPECT_TRUE(seen->empty());
    AppRouter::sharedInstance()->route("/a");
    EXPECT_TRUE(seen && seen->empty());
}

// The flag already reads true in the callback; what it routes to runs at once, and whatever waits when it
// returns is forgotten.
TEST(AppRouter, CallbacksMayUseTheRouter) {
    const auto router = AppRouter::sharedInstance();
    add("/inner", true, "inner");
    AppRouter::Builder("/outer", [](const auto&) {
        visited.push_back(AppRouter::sharedInstance()->isAuthenticated() ? "true" : "false");
        AppRouter::sharedInstance()->route("/inner");
        add("/outer", false, "replaced");  // destroys the callback that runs
        AppRouter::sharedInstance()->setAuthenticated(false);
        AppRouter::sharedInstance()->route("/inner");
    }).build();
    router->route("/outer");
    router->setAuthenticated(true);
    EXPECT_THAT(visited, ElementsAre("true", "inner"));
    router->setAuthenticated(true);
    EXPECT_THAT(visited, ElementsAre("true", "inner"));
    router->route("/outer");
    EXPECT_THAT(visited, ElementsAre("true", "inner", "replaced"));
}

TEST(AppRouter, SharedInstanceMayBeReplaced) {
    const auto first = AppRouter::sharedInstance();
    EXPECT_EQ(AppRouter::sharedInstance(), first);
    const AppRouter::Builder builder =
        AppRouter::Builder("/a", [](const auto&) { visited.emplace_back("a"); }).isAuthRequired(false);
    builder.build();
    AppRouter::setSharedInstance(std::make_shared<AppRouter>());
    AppRouter::sharedInstance()->route("/a");
    EXPECT_TRUE(visited.empty());
    builder.build();
    AppRouter::sharedInstance()->route("/a");
    first->route("/a");
    EXPECT_THAT(visited, ElementsAre("a", "a"));
}

}  // namespace
}  // namespace torvel
