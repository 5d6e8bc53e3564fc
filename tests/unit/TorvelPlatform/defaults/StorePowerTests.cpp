#include "support/Disk.h"
#include "support/StoreTest.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

using testing::Disk;
using testing::DiskRecorder;
using testing::numbered;
using Content = std::map<std::string, std::string>;

// A store whose every write is recorded while it is made, filled, thinned out, cleared and filled again.
struct StorePowerTest : testing::StoreTest {
    struct Step {
        std::string key, value;  // no value: a removal; no key: a clear
    };
    static std::vector<Step> steps() {
        std::vector<Step> all;
        for (int i = 0; i < 6; ++i) all.push_back({numbered("k", i % 4), numbered("v", i)});
        all.insert(all.end(), {{"k1", ""}, {"k3", ""}, {"k3", "again"}, {"", ""}, {"k2", "after the clear"}});
        // Enough to have the log folded into the file and started over.
        for (int i = 0; i < 15; ++i)
            all.push_back({numbered("big", i % 3), std::string(60000, static_cast<char>('a' + i))});
        for (int i = 0; i < 4; ++i) all.push_back({numbered("k", i), "last"});
        return all;
    }
    static std::string shortened(const std::string& value) {
        return value.size() < 100 ? value : numbered(value.substr(0, 1), static_cast<int>(value.size()));
    }
    static StoreStatus take(const Step& step, Content& content) {
        const SecureDefaults store = SecureDefaults::shared();
        if (step.key.empty()) {
            content.clear();
            return SecureDefaults::removePersistentDomain("test-host");
        }
        if (step.value.empty()) return content.erase(step.key), store.remove(step.key);
        content[step.key] = shortened(step.value);
        return store.set(step.key, step.value);
    }
    static Content contentOfStore() {
        Content content;
        for (const std::string& key : SecureDefaults::shared().keys())
            content[key] = shortened(testing::readText(SecureDefaults::shared(), key));
        return content;
    }
    // Opened afresh: one of the two contents that a write under way leaves, and no damage.
    static void expectWhole(const Content& before, const Content& after) {
        const StoreReport report = SecureDefaults::shared().verify();
        ASSERT_EQ(report.status, StoreStatus::ok) << ::testing::PrintToString(report.findings);
        EXPECT_THAT(contentOfStore(), ::testing::AnyOf(before, after));
    }

    std::mt19937 m_random{17};
};

TEST_F(StorePowerTest, OneSyncAWrite) {
    const SecureDefaults store = testing::storeWithKey();
    EXPECT_EQ(store.set("a", 0), StoreStatus::ok);
    DiskRecorder recorder(directory());
    const auto syncs = [&] {
        return std::count_if(recorder.events.begin(), recorder.events.end(),
                             [](const auto& event) { return event.kind == event.synced; });
    };
    for (int i = 0; i < 50; ++i) store.set(numbered("b", i % 2), i);
    store.remove("b0");
    EXPECT_EQ(syncs(), 51);
    for (int i = 0; i < 1000; ++i) store.set("a", i);
    EXPECT_LE(syncs(), 1051 + 3 * 12);  // where the log was folded in
}

TEST_F(StorePowerTest, NothingAcknowledgedIsLostWithThePower) {
    std::vector<Content> contents(2);  // after the creation, and after every step
    DiskRecorder recorder(directory());
    ASSERT_EQ(SecureDefaults::shared().setPassword("8e3ac5dc"), StoreStatus::ok);
    recorder.acknowledge();
    for (const Step& step : steps()) {
        contents.push_back(contents.back());
        ASSERT_EQ(take(step, contents.back()), StoreStatus::ok);
        recorder.acknowledge();
    }
    contents.push_back(contents.back());

    Disk disk;
    std::size_t acknowledged = 0;
    const std::vector<DiskRecorder::Event> events = std::exchange(recorder.events, {});
    for (const DiskRecorder::Event& event : events) {
        disk.take(event);
        acknowledged += event.kind == event.acknowledged ? 1 : 0;
        // Pages are alike.
        const bool isOneOfMany = event.kind == event.wrote && acknowledged > 12 && m_random() % 12 != 0;
        if (isOneOfMany) continue;
        for (const Disk::Kept kept : {Disk::nothing, Disk::everything, Disk::some, Disk::some}) {
            Disk::restore(directory(), disk.afterPowerLoss(kept, m_random));
            if (acknowledged == 0 && SecureDefaults::shared().verify().status == StoreStatus::noKey) continue;
            expectWhole(contents[acknowledged], contents[acknowledged + 1]);
            ASSERT_FALSE(HasFailure()) << "keeping " << kept << " after event " << (&event - events.data())
                                       << " of kind " << event.kind << " on " << event.path;
        }
    }
    EXPECT_EQ(acknowledged + 2, contents.size());
}

struct Fault {
    const char* name;
    int error;
    bool isShort;
    StoreStatus status;
};
void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }

const Fault faults[] = {{"I/O error", EIO, false, StoreStatus::unavailable},
                        {"disk full", ENOSPC, false, StoreStatus::diskFull},
                        {"short write", ENOSPC, true, StoreStatus::diskFull}};

struct EveryFault : StorePowerTest, ::testing::WithParamInterface<Fault> {
    // Has one call fail while a store is made and filled, and the power go some calls later. The number of
    // calls there were.
    int failAt(int call) {
        const Fault& fault = GetParam();
        reopen();
        Disk::restore(directory(), {});
        DiskRecorder recorder(directory());
        recorder.fail(call, fault.error, fault.isShort);
        int failed = 0;
        const auto isDone = [&](StoreStatus status) {
            // SQLite forgets what a sync failed of.
            EXPECT_TRUE(status == StoreStatus::ok || status == fault.status ||
                        status == StoreStatus::unavailable)
                << describe(status);
            failed += status == StoreStatus::ok ? 0 : 1;
            return status == StoreStatus::ok;
        };
        for (int i = 0; i < 3 && !isDone(SecureDefaults::shared().setPassword("8e3ac5dc")); ++i) {
        }
        Content content, doubtful;  // a write that failed last may show once the store is opened afresh
        for (const Step& step : steps()) {
            if (call >= 0 && recorder.calls() > call + 25) break;
            Content after = content;
            const bool isTaken = isDone(take(step, after));
            const Content found = isTaken ? after : contentOfStore();
            EXPECT_TRUE(found == content || found == after);
            content = found;
            doubtful = after;
        }
        const int calls = recorder.calls();
        recorder.fail(-1, 0, false);
        EXPECT_LE(failed, fault.isShort ? 2 : 1);
        expectWhole(content, doubtful);
        Disk disk;
        for (const auto& event : recorder.events) disk.take(event);
        Disk::restore(directory(), disk.afterPowerLoss(Disk::nothing, m_random));
        expectWhole(content, doubtful);
        return calls;
    }
};

// Each call of the library or of SQLite that changes a file fails once. Its caller gets the error or all he
// asked for, nothing else is harmed, and the power may go afterwards.
TEST_P(EveryFault, HarmsNothingElse) {
    const int calls = failAt(-1);
    for (int call = 0; call < calls; call += call < 115 || call > calls - 40 ? 1 : 37) {  // pages are alike
        failAt(call);
        ASSERT_FALSE(HasFailure()) << "at call " << call;
    }
}

INSTANTIATE_TEST_SUITE_P(Store, EveryFault, ::testing::ValuesIn(faults));

}  // namespace
}  // namespace torvel
