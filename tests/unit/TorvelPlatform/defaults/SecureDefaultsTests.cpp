#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/UUID.h"
#include "support/StoreTest.h"

#include <atomic>
#include <iterator>
#include <thread>

#include <gmock/gmock.h>
#include <sys/stat.h>

// A child of a process with threads ends without having joined them, which is no leak.
extern "C" const char* __tsan_default_options() { return "report_thread_leaks=0"; }

namespace torvel {
namespace {

using namespace std::string_literals;
using namespace testing;

class SecureDefaultsTest : public StoreTest {};

TEST_F(SecureDefaultsTest, EveryKindComesBack) {
    const PropertyValue values[] = {
        "\xE2\x82\xAC\0 text",
        PropertyValue::Dictionary{{"", PropertyValue::Array{"a", -1}}, {"when", PropertyValue::Date()}},
        std::string(3 << 20, 'x')};
    const SecureDefaults store = storeWithKey();
    for (std::size_t i = 0; i < std::size(values); ++i)
        EXPECT_EQ(store.set(std::to_string(i), values[i]), StoreStatus::ok);
    reopen();
    for (std::size_t i = 0; i < std::size(values); ++i)
        EXPECT_EQ(store.object(std::to_string(i)), values[i]) << i;
    EXPECT_EQ(store.keys().size(), std::size(values));

    PropertyValue deep = 1;
    for (int i = 0; i < 100; ++i) deep = PropertyValue::Array{std::move(deep)};
    EXPECT_EQ(store.set("0", deep), StoreStatus::invalidValue);
    EXPECT_EQ(store.object("0"), values[0]);
}

TEST_F(SecureDefaultsTest, SuitesAreDomains) {
    EXPECT_FALSE(SecureDefaults::suite("") || SecureDefaults::suite("test-host"));
    const SecureDefaults shared = storeWithKey(), one = storeWithKey("one"), other = storeWithKey("../o\n");
    for (const SecureDefaults& store : {shared, one, other}) EXPECT_EQ(store.set("a", "1"), StoreStatus::ok);
    EXPECT_EQ(one.set("b", ""), StoreStatus::ok);
    EXPECT_EQ(one.remove("a"), StoreStatus::ok);
    EXPECT_EQ(one.remove("a"), StoreStatus::ok);
    EXPECT_THAT(one.keys(), ::testing::ElementsAre("b"));

    EXPECT_EQ(SecureDefaults::removePersistentDomain("never made"), StoreStatus::ok);
    EXPECT_EQ(SecureDefaults::removePersistentDomain("test-host"), StoreStatus::ok);
    EXPECT_EQ(SecureDefaults::removePersistentDomain("one"), StoreStatus::ok);
    reopen();
    EXPECT_EQ(readText(shared, "a"), "-");
    EXPECT_EQ(one.keys().size(), 0U);
    EXPECT_EQ(readText(other, "a"), "1");
    EXPECT_EQ(one.set("a", "2"), StoreStatus::ok);  // its key stayed
    EXPECT_EQ(one.verify().status, StoreStatus::ok);
}

TEST_F(SecureDefaultsTest, NothingStandsInTheFilesAndTheyAreTheUsersAlone) {
    ::umask(0);
    std::filesystem::create_directories(data() / "test-host" / "store");  // open to all
    const std::string password = randomUUIDString();
    const SecureDefaults store = *SecureDefaults::suite("suite of secrets");
    EXPECT_EQ(store.setPassword(password), StoreStatus::ok);
    for (int i = 0; i < 300; ++i) EXPECT_EQ(store.set("name of a key", "value of a key"), StoreStatus::ok);

    EXPECT_GE(files().size(), 9U);
    for (const auto& file : files()) {
        struct stat status {};
        ASSERT_EQ(::lstat(file.c_str(), &status), 0);
        const bool isHostsOwn = file.filename() == "test-host" && file.parent_path() == data();  // made above
        EXPECT_TRUE(isHostsOwn || (status.st_mode & 077) == 0) << file;
        if (!S_ISREG(status.st_mode)) continue;
        const std::string bytes = readFile(file).value().raw();
        for (const std::string& text : {password, "suite of"s, "name of"s, "value of"s})
            EXPECT_EQ(bytes.find(text), std::string::npos) << file << " " << text;
    }
}

TEST_F(SecureDefaultsTest, KeyIsMadeOnceFromItsPassword) {
    const SecureDefaults store = *SecureDefaults::suite("s");
    EXPECT_FALSE(store.isKeyCreated());
    EXPECT_EQ(store.status(), StoreStatus::noKey);
    EXPECT_EQ(store.set("a", 1), StoreStatus::noKey);
    EXPECT_EQ(readText(store, "a"), "-");
    EXPECT_FALSE(std::filesystem::exists(data()));

    EXPECT_EQ(store.setPassword("first"), StoreStatus::ok);
    EXPECT_TRUE(store.isKeyCreated());
    EXPECT_EQ(store.set("a", 1), StoreStatus::ok);
    EXPECT_EQ(store.setPassword("first"), StoreStatus::ok);
    EXPECT_EQ(store.setPassword("second"), StoreStatus::keyMismatch);

    std::filesystem::remove_all(state());
    reopen();
    EXPECT_TRUE(store.isKeyCreated());
    EXPECT_EQ(store.setPassword("second"), StoreStatus::keyMissing);
    EXPECT_EQ(readText(store, "a"), describe(StoreStatus::keyMissing));
    EXPECT_FALSE(std::filesystem::exists(state()));
    EXPECT_EQ(store.setPassword("first"), StoreStatus::ok);
    EXPECT_EQ(readText(store, "a"), "1");
}

TEST_F(SecureDefaultsTest, ResetLosesNothing) {
    const SecureDefaults store = storeWithKey();
    EXPECT_EQ(store.set("a", "old"), StoreStatus::ok);
    const std::size_t before = files().size();
    EXPECT_EQ(store.reset(), StoreStatus::ok);
    EXPECT_FALSE(store.isKeyCreated());
    EXPECT_EQ(readText(store, "a"), "-");
    EXPECT_GE(files().size(), before - 1);  // but for SQLite's shared index
    storeWithKey();
    EXPECT_EQ(store.set("a", "new"), StoreStatus::ok);
    EXPECT_EQ(store.reset(), StoreStatus::ok);
    EXPECT_FALSE(store.isKeyCreated());
}

// Two processes take turns; a byte through a pipe hands over.
TEST_F(SecureDefaultsTest, ProcessesSeeEachOther) {
    const SecureDefaults store = storeWithKey();
    int there[2], back[2];
    ASSERT_TRUE(::pipe(there) == 0 && ::pipe(back) == 0);
    const auto pass = [](int pipe) { EXPECT_EQ(::write(pipe, "", 1), 1); };
    const auto wait = [](int pipe) {
        char byte;
        EXPECT_EQ(::read(pipe, &byte, 1), 1);
    };
    const pid_t child = ::fork();
    if (child == 0) {
        bool ok = true;
        wait(there[0]);
        ok = ok && readText(store, "a") == "1" && store.set("a", 2) == StoreStatus::ok;
        pass(back[1]);
        wait(there[0]);
        ok = ok && readText(store, "a") == "-" && store.reset() == StoreStatus::ok &&
             store.setPassword("another") == StoreStatus::ok && store.set("a", 4) == StoreStatus::ok;
        pass(back[1]);
        wait(there[0]);
        ::_exit(ok && readText(store, "a") == "5" && store.verify().status == StoreStatus::ok ? 0 : 1);
    }
    EXPECT_EQ(store.set("a", 1), StoreStatus::ok);
    pass(there[1]);
    wait(back[0]);
    EXPECT_EQ(readText(store, "a"), "2");
    EXPECT_EQ(store.remove("a"), StoreStatus::ok);
    pass(there[1]);
    wait(back[0]);
    EXPECT_EQ(readText(store, "a"), "4");  // from the store that the other process made in this one's place
    EXPECT_EQ(store.set("a", 5), StoreStatus::ok);
    pass(there[1]);
    int status = 1;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

// Both sides of a fork go on, whatever other threads were doing.
TEST_F(SecureDefaultsTest, ThreadsAndForks) {
    const SecureDefaults store = storeWithKey();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t) {
        threads.emplace_back([t, &store, &wrong] {
            const std::string key = numbered("t", t);
            for (int i = 0; i < 40; ++i)
                wrong += store.set(key, i) != StoreStatus::ok || store.object(key) != PropertyValue(i);
        });
    }
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(inChild([&store, i] {
            storeWithKey("the child's own");
            const std::string key = numbered("child", i);
            return store.set(key, i) == StoreStatus::ok &&
                   SecureDefaults::shared().object(key) == PropertyValue(i);
        }));
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(store.keys().size(), 8U);
    EXPECT_EQ(store.verify().status, StoreStatus::ok);
}

}  // namespace
}  // namespace torvel
