#include "TorvelLibrary/Utils/UserStorageHelper.h"
#include "support/StoreTest.h"

namespace torvel {
namespace {

class UserStorageHelperTest : public testing::StoreTest {};

TEST_F(UserStorageHelperTest, ChoosesTheStore) {
    const struct {
        const char* name;
        UserStorageHelper::Suite defaultSuite, inSuite;
        const char* chosen;  // "" is the shared store
    } rows[] = {
        {"nothing named", {}, {}, ""},
        {"empty default", "", {}, ""},
        {"default", "one", {}, "one"},
        {"empty suite falls back to the default", "one", "", "one"},
        {"suite before the default", "one", "two", "two"},
        {"suite without a default", {}, "two", "two"},
        {"no default any more", {}, "", ""},
    };
    int value = 0;
    for (const auto& row : rows) {
        UserStorageHelper::initialSetup(row.defaultSuite);
        UserStorageHelper::save(++value, "key", row.inSuite);
        const std::string chosen = row.chosen;
        const auto store = chosen.empty() ? SecureDefaults::shared() : *SecureDefaults::suite(chosen);
        EXPECT_EQ(store.object("key"), PropertyValue(value)) << row.name;
        EXPECT_EQ(UserStorageHelper::integer("key", row.inSuite), value) << row.name;
        UserStorageHelper::remove("key", row.inSuite);
        EXPECT_FALSE(store.object("key")) << row.name;
    }
}

// What every reader makes of every kind; "-" is absent.
TEST_F(UserStorageHelperTest, Readers) {
    const std::string here = URL::file("3.5").absoluteString();
    const struct {
        const char* name;
        std::optional<PropertyValue> value;
        const char* string;
        std::int64_t integer;
        double number;
        bool boolean;
        const char* url;
    } rows[] = {
        {"nothing", {}, "-", 0, 0, false, "-"},
        {"text", "3.5", "3.5", 3, 3.5, true, here.c_str()},
        {"URL", *URL::parse("https://host/a?b=1"), "-", 0, 0, false, "https://host/a?b=1"},
        {"dictionary", PropertyValue::Dictionary{{"a", PropertyValue::Array{1}}}, "-", 0, 0, false, "-"},
        {"data", Data("1"), "-", 0, 0, false, "-"},
        {"array of texts", std::vector<std::string>{"fr", "en"}, "-", 0, 0, false, "-"},
    };
    using Helper = UserStorageHelper;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Helper::save("before", "key");
        Helper::save(row.value, "key");
        EXPECT_EQ(Helper::object("key"), row.value);
        EXPECT_EQ(Helper::string("key").value_or("-"), row.string);
        EXPECT_EQ(Helper::integer("key"), row.integer);
        EXPECT_EQ(Helper::floatValue("key"), static_cast<float>(row.number));
        EXPECT_EQ(Helper::doubleValue("key"), row.number);
        EXPECT_EQ(Helper::boolValue("key"), row.boolean);
        const auto url = Helper::url("key");
        EXPECT_EQ(url ? url->absoluteString() : "-", row.url);
        const auto holds = [&row](auto kind) {
            const auto* content = row.value ? row.value->as<decltype(kind)>() : nullptr;
            return content != nullptr ? std::optional(*content) : std::nullopt;
        };
        EXPECT_EQ(Helper::data("key"), holds(Data()));
        EXPECT_EQ(Helper::array("key"), holds(PropertyValue::Array()));
        EXPECT_EQ(Helper::dictionary("key"), holds(PropertyValue::Dictionary()));
        EXPECT_EQ(Helper::stringArray("key").has_value(), row.name == std::string("array of texts"));
    }
}

TEST_F(UserStorageHelperTest, ClearsADomainOfTheSharedStore) {
    UserStorageHelper::save(1, "key");
    EXPECT_FALSE(SecureDefaults::suite("one")->isKeyCreated());
    UserStorageHelper::initialSetup("one");
    EXPECT_TRUE(SecureDefaults::suite("one")->isKeyCreated());
    UserStorageHelper::save(2, "key");
    UserStorageHelper::clearAll("unknown");
    UserStorageHelper::clearAll("test-host");
    EXPECT_EQ(UserStorageHelper::integer("key"), 2);
    EXPECT_FALSE(SecureDefaults::shared().object("key"));
    UserStorageHelper::clearAll("one");
    EXPECT_FALSE(UserStorageHelper::object("key"));
}

TEST_F(UserStorageHelperTest, StoresThatCannotBeOpened) {
    UserStorageHelper::save(1, "key");
    reopen();
    std::filesystem::remove_all(state());
    for (const UserStorageHelper::Suite& suite : {UserStorageHelper::Suite(), {"test-host"}}) {  // no suite
        UserStorageHelper::save(2, "key", suite);
        UserStorageHelper::remove("key", suite);
        EXPECT_FALSE(UserStorageHelper::object("key", suite) || UserStorageHelper::string("key", suite));
        EXPECT_FALSE(UserStorageHelper::integer("key", suite) || UserStorageHelper::boolValue("key", suite));
        EXPECT_FALSE(UserStorageHelper::doubleValue("missing", suite));
    }
    EXPECT_FALSE(std::filesystem::exists(state()));  // no new key over the old data
}

}  // namespace
}  // namespace torvel
