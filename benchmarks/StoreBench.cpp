// The encrypted store beside a bare forced write, beside the engine it is built on, and beside other stores.
#include "Bench.h"
#include "StorePeers.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "TorvelPlatform/foundation/Bundle.h"

#include <atomic>
#include <filesystem>

#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace torvel;
using namespace torvel::bench;
namespace fs = std::filesystem;

// Every forced write of the process comes by here. None is made while stores are filled.
static std::atomic<int> syncs{0};
static std::atomic<bool> isFilling{false};
static int forced(long call, int file) {
    ++syncs;
    return isFilling ? 0 : static_cast<int>(::syscall(call, file));
}
extern "C" int fdatasync(int file) { return forced(SYS_fdatasync, file); }
extern "C" int fsync(int file) { return forced(SYS_fsync, file); }

namespace {

fs::path folder;
std::string nameOf(std::size_t number) { return "setting." + std::to_string(number); }
const std::string value(100, 'v');

SecureDefaults storeOf(std::size_t keys) {
    const SecureDefaults store = *SecureDefaults::suite(std::to_string(keys));
    if (store.isKeyCreated()) return store;
    isFilling = true;
    if (store.setPassword("6f0d4f62-8f0c-4d4a-a2a7-0d3b7f2f6f5e") != StoreStatus::ok) giveUp("no store");
    for (std::size_t i = 0; i < keys; ++i) store.set(nameOf(i), value);
    isFilling = false;
    return store;
}

// Puts over keys that are there already, all over the store.
template <class Put>
Side putting(std::size_t keys, Put put) {
    return repeating([put, keys, i = std::size_t{0}]() mutable { put(nameOf((i += 7919) % keys), value); });
}

void measurePuts(Report& report) {
    for (const std::size_t keys : {std::size_t{100}, std::size_t{100'000}}) {
        const SecureDefaults store = storeOf(keys);
        const Side ours = putting(keys, [&](const auto& key, const auto& text) { store.set(key, text); });
        isFilling = true;
        ours(3000);  // until the log has started over and each of the 256 buckets was checked
        isFilling = false;
        RawFile raw(folder / "raw");
        // What the engine itself costs, which tells of no older data put back and of no missing entry.
        BareEngine bare(folder / ("bare-" + std::to_string(keys)));
        isFilling = true;
        bare.fill(keys);
        const Side engine =
            repeating([&, i = std::size_t{0}]() mutable { bare.put((i += 7919) % keys, value); });
        engine(3000);
        isFilling = false;
        ::sync();  // what was filled without syncs would be written while the sides are timed
        const Pace pace{Clock::wall, 15, 0.05};
        const Side overwrite = putting(keys, [&](const auto&, const auto&) { raw.overwrite(); });
        const Rounds rounds = takeTurns({overwrite, ours, engine}, pace);
        const std::string name = keys == 100 ? "durable-put" : "durable-put-at-100000-keys";
        report.atMost(name, rounds.ratio(1, 0), keys == 100 ? 1.45 : 1.5);
        report.time(name, "write-and-fdatasync", rounds.time(0));
        report.time(name, "bare-engine", rounds.time(2));
        report.time(name, "torvel", rounds.time(1));
        // One by one, as what one leaves to the file system's journal slows down whoever comes next.
        for (const Peer& peer : keys == 100 ? otherStores(folder) : std::vector<Peer>()) {
            isFilling = true;
            for (std::size_t i = 0; i < keys; ++i) peer.put(nameOf(i), value);
            isFilling = false;
            ::sync();
            const Rounds beside = takeTurns({ours, putting(keys, peer.put)}, pace);
            report.atLeast(peer.name + "-over-ours", beside.ratio(1, 0), peer.goal);
            report.time(peer.name + "-over-ours", "torvel", beside.time(0));
            report.time(peer.name + "-over-ours", peer.name, beside.time(1));
        }
        while (true) {  // not across a fold of the log, which pays for two more, and one where it starts over
            const int before = syncs;
            ours(20);
            if (syncs - before > 20 + 3) giveUp("more than one sync a put");
            if (syncs - before != 20) continue;
            if (keys == 100) report.atMost("syncs-a-put", (syncs - before) / 20.0, 1);
            break;
        }
    }
}

void measureReads(Report& report) {
    constexpr std::size_t keys = 1000;
    const SecureDefaults store = storeOf(keys);
    BareEngine bare(folder / "bare.db");
    bare.fill(keys);
    auto next = [i = std::size_t{0}]() mutable { return (i += 7) % keys; };
    std::vector<std::string> names(keys);
    for (std::size_t i = 0; i < keys; ++i) names[i] = nameOf(i);
    const Rounds rounds = takeTurns({
        repeating([&, next]() mutable { keep(bare.read(next())); }),
        repeating([&, next]() mutable {
            if (!store.object(names[next()])) giveUp("a value is gone");
        }),
        repeating([&, next]() mutable { keep(store.contains(names[next()])); }),
        repeating([] { keep(SecureDefaults::suite("1000")); }),
    });
    report.atMost("warm-read", rounds.ratio(1, 0), 1.2);
    report.time("warm-read", "select-and-open", rounds.time(0));
    report.time("warm-read", "torvel", rounds.time(1));
    report.atMost("contains", rounds.ratio(2, 0), 0.4);
    report.time("contains", "torvel", rounds.time(2));
    report.atMost("fresh-object", rounds.ratio(3, 0), 0.06);
    report.time("fresh-object", "torvel", rounds.time(3));
}

// A fork closes the process's stores.
void closeStores() {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(0);
    ::waitpid(child, nullptr, 0);
}

template <class Work>
double timed(Work work) {
    const double start = seconds(Clock::thread);
    work();
    return seconds(Clock::thread) - start;
}

// An opening reads what is in the log, which is half of what is folded in at once on average.
void fillHalfOfTheLog(const SecureDefaults& store) {
    for (int before = syncs; syncs - before < 2;) {
        before = syncs;
        store.set(nameOf(0), value);
    }
    for (int i = 0; i < 100; ++i) store.set(nameOf(0), value);  // two pages each, of 400
}

// The bare engine opens a copy of the store's own file and log.
void measureFirstOpen(Report& report) {
    for (const std::size_t keys : {std::size_t{100}, std::size_t{100'000}}) {
        const SecureDefaults store = storeOf(keys);
        fillHalfOfTheLog(store);
        closeStores();
        const fs::path copy = folder / ("copy-" + std::to_string(keys));
        fs::copy(databaseOf(std::to_string(keys)).parent_path(), copy);
        std::vector<std::vector<double>> times;
        for (int round = 0; round < 41; ++round) {
            closeStores();
            const double bare = timed([&] { BareEngine(copy / "entries.db").readAny(); });
            const double ours = timed([&] {
                if (!store.object(nameOf(keys / 2))) giveUp("a value is gone");
            });
            times.push_back({bare, ours});
        }
        const Rounds rounds(std::move(times));
        const std::string name = "first-open-and-read-" + std::to_string(keys);
        report.atMost(name, rounds.ratio(1, 0), 1.5);
        report.time(name, "bare-engine", rounds.time(0));
        report.time(name, "torvel", rounds.time(1));
    }
}

}  // namespace

int main() {
    std::string made = (fs::temp_directory_path() / "torvel-bench-XXXXXX").string();
    folder = ::mkdtemp(made.data());
    ::setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
    ::setenv("XDG_STATE_HOME", (folder / "state").c_str(), 1);
    Bundle::setMain(folder, "bench");
    Report report("store");
    measureReads(report);
    measureFirstOpen(report);
    measurePuts(report);
    fs::remove_all(folder);
    return report.exitCode();
}
