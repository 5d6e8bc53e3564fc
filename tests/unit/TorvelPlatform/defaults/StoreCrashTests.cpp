#include "support/StoreTest.h"

#include <random>

#include <signal.h>

namespace torvel {
namespace {

using testing::numbered;
using testing::storeWithKey;

struct Writer {
    pid_t process;
    int acknowledgements;  // a byte for every write that returned
};

// In some rounds the store is new, and the writers create its key.
bool isNew(int round) { return round % 8 >= 6; }
SecureDefaults storeOf(int round) {
    return isNew(round) ? *SecureDefaults::suite(numbered("new", round)) : SecureDefaults::shared();
}

struct StoreCrashTest : testing::StoreTest {
    // A process that counts upwards under a name, and now and then removes it, or everything, in between.
    static Writer startWriter(int round, const std::string& key, int writes, bool clears) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child != 0) {
            ::close(ends[1]);
            return {child, ends[0]};
        }
        const SecureDefaults store = storeOf(round);
        const auto must = [](bool isDone) {
            if (!isDone) ::_exit(1);
        };
        if (store.status() == StoreStatus::noKey) must(store.setPassword("4b1d") == StoreStatus::ok);
        const std::string domain = isNew(round) ? numbered("new", round) : "test-host";
        for (int i = 1; i <= writes; ++i) {
            if (i % 7 == 0) must(store.remove(key) == StoreStatus::ok);
            if (i % 5 == 0 && clears) must(SecureDefaults::removePersistentDomain(domain) == StoreStatus::ok);
            must(store.set(key, i) == StoreStatus::ok && ::write(ends[1], "", 1) == 1);
        }
        ::_exit(0);
    }

    // Takes acknowledgements, at most so many; how many there were.
    static int take(const Writer& writer, int atMost) {
        int taken = 0;
        for (char byte; taken < atMost && ::read(writer.acknowledgements, &byte, 1) == 1;) ++taken;
        return taken;
    }

    static int finish(const Writer& writer, int taken) {
        int status = 0;
        ::waitpid(writer.process, &status, 0);
        EXPECT_TRUE(WIFSIGNALED(status) || status == 0);
        taken += take(writer, 1000);
        ::close(writer.acknowledgements);
        return taken;
    }

    // The last acknowledged write, or the one under way when the process was killed; it may have been at a
    // removal, or at the creation of the key, then.
    static void expectKept(int round, const std::string& key, int acknowledged, bool clears) {
        const auto outcome = storeOf(round).read(key);
        ASSERT_TRUE(outcome.ok()) << key << ": " << describe(outcome.error());
        const int next = acknowledged + 1;
        const std::int64_t kept = outcome.value() ? outcome.value()->integerValue() : 0;
        const bool mayBeRemoved = acknowledged == 0 || next % 7 == 0 || (next % 5 == 0 && clears);
        EXPECT_TRUE(kept == acknowledged || kept == next || (kept == 0 && mayBeRemoved))
            << key << ": " << kept << " for " << acknowledged;
        if (!clears || isNew(round)) return;
        // Whatever else there was went with the first clear, all of it or nothing.
        for (const char* other : {"x", "y", "z"}) {
            const bool isThere = testing::readText(storeOf(round), other) == "1";
            const bool isLeft = testing::readText(storeOf(round), "x") == "1";
            EXPECT_TRUE(isThere == isLeft && (next == 5 || isLeft == (next < 5)));
        }
    }
};

TEST_F(StoreCrashTest, NoAcknowledgedWriteIsLostWhenAWriterIsKilled) {
    std::mt19937 random(7);
    storeWithKey();
    for (int round = 0; round < 200; ++round) {
        const bool isAlone = round % 2 == 0;
        const std::string key = numbered("k", round % 20), otherKey = "other" + key;
        const SecureDefaults store = storeOf(round);
        if (!isNew(round)) {
            for (const char* other : {"x", "y", "z"}) store.set(other, 1);
            store.remove(key);
        }
        const Writer victim = startWriter(round, key, 1000, isAlone);
        const int taken = take(victim, static_cast<int>(random() % 12));
        const Writer survivor = isAlone ? Writer{-1, -1} : startWriter(round, otherKey, 10, false);
        ::kill(victim.process, SIGKILL);
        expectKept(round, key, finish(victim, taken), isAlone);
        if (!isAlone) {
            EXPECT_EQ(finish(survivor, 0), 10);
            EXPECT_EQ(store.object(otherKey), PropertyValue(10));
        }
        const StoreStatus whole = store.verify().status;
        EXPECT_TRUE(whole == StoreStatus::ok || (whole == StoreStatus::noKey && isNew(round) && isAlone));
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
}

}  // namespace
}  // namespace torvel
