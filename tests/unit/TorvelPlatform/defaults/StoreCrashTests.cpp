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

class StoreCrashTest : public testing::StoreTest {
  protected:
    // A process that counts upwards under a name, now and then removes it in between, and clears nothing.
    static Writer startWriter(const std::string& key, int writes) {
        int ends[2];
        EXPECT_EQ(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child != 0) {
            ::close(ends[1]);
            return {child, ends[0]};
        }
        const SecureDefaults store = SecureDefaults::shared();
        for (int i = 1; i <= writes; ++i) {
            if (i % 7 == 0 && store.remove(key) != StoreStatus::ok) ::_exit(1);
            if (store.set(key, i) != StoreStatus::ok || ::write(ends[1], "", 1) != 1) ::_exit(1);
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
    // removal then.
    static void expectKept(const std::string& key, int acknowledged) {
        const auto outcome = SecureDefaults::shared().read(key);
        ASSERT_TRUE(outcome.ok()) << key << ": " << describe(outcome.error());
        const int next = acknowledged + 1;
        const std::int64_t kept = outcome.value() ? outcome.value()->integerValue() : 0;
        const bool mayBeRemoved = acknowledged == 0 || next % 7 == 0;
        EXPECT_TRUE(kept == acknowledged || kept == next || (kept == 0 && mayBeRemoved))
            << key << ": " << kept << " for " << acknowledged;
    }
};

TEST_F(StoreCrashTest, NoAcknowledgedWriteIsLostWhenAWriterIsKilled) {
    std::mt19937 random(7);
    storeWithKey();
    for (int round = 0; round < 200; ++round) {
        const bool isAlone = round % 2 == 0;
        const std::string key = numbered("k", round % 20), otherKey = "other" + key;
        const SecureDefaults store = SecureDefaults::shared();
        store.remove(key);
        const Writer victim = startWriter(key, 1000);
        const int taken = take(victim, static_cast<int>(random() % 12));
        const Writer survivor = isAlone ? Writer{-1, -1} : startWriter(otherKey, 10);
        ::kill(victim.process, SIGKILL);
        expectKept(key, finish(victim, taken));
        if (!isAlone) {
            EXPECT_EQ(finish(survivor, 0), 10);
            EXPECT_EQ(store.object(otherKey), PropertyValue(10));
        }
        ASSERT_FALSE(HasFailure()) << "round " << round;
    }
    EXPECT_EQ(SecureDefaults::shared().verify().status, StoreStatus::ok);
}

}  // namespace
}  // namespace torvel
