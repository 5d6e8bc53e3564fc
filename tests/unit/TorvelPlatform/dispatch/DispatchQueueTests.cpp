#include "TorvelPlatform/dispatch/DispatchQueue.h"

#include <atomic>
#include <future>
#include <thread>

#include <gtest/gtest.h>
#include <poll.h>
#include <pthread.h>
#include <unistd.h>

namespace torvel {
namespace {

using std::chrono_literals::operator""s;

bool readable(int fd) {
    pollfd asked{fd, POLLIN, 0};
    return poll(&asked, 1, 0) == 1;
}

TEST(MainQueue, RunsInOrderWhatWasPostedBeforeAnyLoopAndFromInsideItems) {
    DispatchQueue& queue = DispatchQueue::main();
    std::string order;
    queue.async([&] {
        order += 'a';
        queue.async([&] { order += 'd'; });
        EXPECT_EQ(queue.drain(), 0U) << "not re-entrant";
    });
    queue.async(std::vector<DispatchQueue::Work>{[&] { order += 'b'; }, [&] { order += 'c'; }});
    EXPECT_EQ(queue.drain(), 3U) << "an item posted meanwhile waits for the next call";
    EXPECT_EQ(queue.drain(), 1U);
    EXPECT_EQ(order, "abcd");
}

TEST(MainQueue, WakeDescriptorIsReadableExactlyWhileItemsWait) {
    DispatchQueue& queue = DispatchQueue::main();
    const int fd = queue.wakeFd();
    EXPECT_FALSE(readable(fd));
    queue.async(std::vector<DispatchQueue::Work>{});
    EXPECT_FALSE(readable(fd)) << "an empty batch is nothing to wake for";
    queue.async([&] {
        EXPECT_FALSE(readable(fd)) << "the item itself no longer waits";
        queue.async([&] { queue.stop(); });
        EXPECT_TRUE(readable(fd)) << "posted during a drain";
    });
    EXPECT_TRUE(readable(fd));
    EXPECT_TRUE(readable(fd)) << "level, not edge";
    queue.drain();
    EXPECT_TRUE(readable(fd));
    queue.run();
    EXPECT_FALSE(readable(fd));
}

TEST(MainQueue, RunReturnsAfterWhatWasPostedBeforeStop) {
    DispatchQueue& queue = DispatchQueue::main();
    int ran = 0;
    std::thread other([&] {
        for (int i = 0; i < 100; ++i) queue.async([&] { ++ran; });
        queue.stop();
    });
    queue.run();
    other.join();
    EXPECT_EQ(ran, 100);
}

TEST(MainQueue, RunUntilAsksAfterEachBatchAndGivesUpInTime) {
    DispatchQueue& queue = DispatchQueue::main();
    EXPECT_FALSE(queue.runUntil([] { return false; }, std::chrono::milliseconds(0)));
    bool done = false;
    std::thread other([&] { queue.async([&] { done = true; }); });
    EXPECT_TRUE(queue.runUntil([&] { return done; }, 60s));
    other.join();
}

TEST(Queues, KeepTheOrderOfEachOfManyPosters) {
    constexpr int posters = 8, items = 2000;
    DispatchQueue serial("tests.order");
    for (DispatchQueue* const queue : {&DispatchQueue::main(), &serial}) {
        std::vector<int> next(posters, 0);
        std::atomic<int> total{0}, outOfOrder{0};
        std::vector<std::thread> threads;
        for (std::size_t poster = 0; poster < posters; ++poster) {
            threads.emplace_back([&, queue, poster] {
                for (int i = 0; i < items; ++i) {
                    queue->async([&, poster, i] {
                        if (next[poster]++ != i) ++outOfOrder;
                        if (++total == posters * items) DispatchQueue::main().stop();
                    });
                }
            });
        }
        DispatchQueue::main().run();
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(total, posters * items) << (queue == &serial);
        EXPECT_EQ(outOfOrder, 0) << (queue == &serial);
    }
}

TEST(SerialQueue, DestructionRunsWhatWasPosted) {
    int ran = 0;
    {
        DispatchQueue queue("tests.destruction");
        queue.async([&] { queue.async([&] { ++ran; }); });
        queue.async([&] { ++ran; });
    }
    EXPECT_EQ(ran, 2);
}

TEST(SerialQueue, MayBeDestroyedInsideItsOwnItem) {
    auto queue = std::make_unique<DispatchQueue>("tests.suicide");
    std::promise<void> released, last;
    queue->async([&, go = released.get_future().share()] {
        go.wait();
        queue.reset();
    });
    queue->async([&] { last.set_value(); });
    released.set_value();
    last.get_future().wait();
    EXPECT_EQ(queue, nullptr);
}

// For the thread sanitizer: the poster may not be back yet.
TEST(SerialQueue, MayBeDestroyedOnceItsLastItemRan) {
    for (int i = 0; i < 100; ++i) {
        std::promise<void> ran;
        auto queue = std::make_unique<DispatchQueue>("tests.last");
        std::thread poster([&ran, last = queue.get()] { last->async([&ran] { ran.set_value(); }); });
        ran.get_future().wait();
        queue.reset();
        poster.join();
    }
}

TEST(SerialQueue, OwnsOneNamedThreadThatTakesNoneOfTheHostsSignals) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    close(ends[0]);
    int failure = 0;
    char name[16] = {};
    {
        DispatchQueue queue("org.example.rootQueueWithALongName");
        queue.async([&] {
            failure = write(ends[1], "x", 1) < 0 ? errno : 0;
            pthread_getname_np(pthread_self(), name, sizeof name);
        });
    }
    EXPECT_STREQ(name, "rootQueueWithAL");
    EXPECT_EQ(failure, EPIPE) << "and the process goes on";
    close(ends[1]);
}

TEST(QueueDeathTest, MisuseAndEscapingExceptionsEndTheProcess) {
    DispatchQueue serial("tests.misuse");
    DispatchQueue& main = DispatchQueue::main();
    EXPECT_DEATH(serial.run(), "belongs to the main queue");
    EXPECT_DEATH((main.async([&] { main.run(); }), main.drain()), "from inside an item");
    EXPECT_DEATH((main.async([] { throw 1; }), main.drain()), "");
}

}  // namespace
}  // namespace torvel
