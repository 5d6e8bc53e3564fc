#include "TorvelPlatform/defaults/SealedEntry.h"
#include "TorvelPlatform/defaults/SequenceFile.h"
#include "TorvelPlatform/defaults/StoreFiles.h"
#include "TorvelPlatform/foundation/Diagnostics.h"
#include "support/StoreTest.h"

#include <random>

#include <gmock/gmock.h>
#include <sqlite3.h>
#include <sys/stat.h>

namespace torvel {
namespace {

namespace fs = std::filesystem;
using testing::inChild;
using testing::numbered;
using testing::readText;
using testing::storeWithKey;

std::vector<StoreFault> faults;
std::vector<std::string> lines;

// A store of the entries a, b and c ("first", "second", "third"), another suite, and what an attacker or a
// failing disk does to their files.
class StoreDamageTest : public testing::StoreTest {
  public:
    StoreDamageTest() {
        SecureDefaults::setDamageHandler([](const StoreFault& fault) { faults.push_back(fault); });
        setDiagnosticSink(
            [](std::string_view line, const std::source_location&) { lines.emplace_back(line); });
    }

    static inline const StoreID id = storeID("test-host");
    fs::path folder() const { return data() / "test-host/store" / hexadecimal(id); }
    fs::path database() const { return folder() / "entries.db"; }
    fs::path log() const { return folder() / "entries.db-wal"; }
    fs::path last() const { return fs::path(key()).replace_extension(".last"); }
    fs::path key() const { return state() / "test-host/keys" / (hexadecimal(id) + ".key"); }

    void fill() const {
        const SecureDefaults store = storeWithKey();
        EXPECT_EQ(store.set("a", "older"), StoreStatus::ok);
        fs::copy(database(), data() / "older.db");
        fs::copy(log(), data() / "older.wal");
        sql("ATTACH '" + (data() / "older.rows").native() +
            "' AS o; CREATE TABLE o.entry AS SELECT * FROM entry;"
            "CREATE TABLE o.summary AS SELECT * FROM summary");
        EXPECT_EQ(store.set("a", "first"), StoreStatus::ok);
        EXPECT_EQ(store.set("b", "second"), StoreStatus::ok);
        EXPECT_EQ(store.set("c", "third"), StoreStatus::ok);
        EXPECT_EQ(storeWithKey("suite").set("a", "foreign"), StoreStatus::ok);
        reopen();
    }

    // What another tool does to the database; $a stands for the tag of an entry.
    void sql(std::string statements) const {
        const auto root = loadKeyFile(key());
        ASSERT_TRUE(root.ok());
        for (std::size_t at; (at = statements.find('$')) != std::string::npos;) {
            const std::string tag = StoreSealer(root.value(), id).tag(statements.substr(at + 1, 1));
            StoreID bytes;
            std::copy(tag.begin(), tag.end(), bytes.begin());
            statements.replace(at, 2, "x'" + hexadecimal(bytes) + "'");
        }
        sqlite3* connection = nullptr;
        ASSERT_EQ(sqlite3_open(database().c_str(), &connection), SQLITE_OK);
        char* error = nullptr;
        EXPECT_EQ(sqlite3_exec(connection, statements.c_str(), nullptr, nullptr, &error), SQLITE_OK) << error;
        sqlite3_close(connection);
    }

    using StoreTest::data;
    using StoreTest::state;

    static void flip(const fs::path& file, std::streamoff at) {
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekg(at);
        const char byte = static_cast<char>(stream.get() ^ 0x10);
        stream.seekp(at);
        stream.put(byte);
    }
};

const std::string damaged(describe(StoreStatus::damaged));

// What happens to the files of a store that is closed, and what it says when it is opened again.
struct Row {
    const char* name;
    std::function<void(const StoreDamageTest& test)> happens;
    StoreStatus status;
    // What reading a, b and a name that never was gives; empty: what the status says.
    std::string a = {}, b = {}, none = {};
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

const Row rows[] = {
    {"nothing", [](auto&) {}, StoreStatus::ok, "first", "second", "-"},
    {"key file lost", [](auto& test) { fs::remove(test.key()); }, StoreStatus::keyMissing},
    {"key folder lost", [](auto& test) { fs::remove_all(test.state()); }, StoreStatus::keyMissing},
    {"key file readable by others", [](auto& test) { ::chmod(test.key().c_str(), 0640); },
     StoreStatus::keyUnsafe},
    {"key folder writable by others", [](auto& test) { ::chmod(test.key().parent_path().c_str(), 0770); },
     StoreStatus::keyUnsafe},
    {"key file a link",
     [](auto& test) {
         fs::rename(test.key(), test.key().native() + ".real");
         fs::create_symlink(test.key().native() + ".real", test.key());
     },
     StoreStatus::keyUnsafe},
    {"key file a pipe",
     [](auto& test) {
         fs::remove(test.key());
         ::mkfifo(test.key().c_str(), 0600);
     },
     StoreStatus::keyUnsafe},
    {"key file cut", [](auto& test) { fs::resize_file(test.key(), 40); }, StoreStatus::keyDamaged},
    {"bit of the key flipped", [](auto& test) { test.flip(test.key(), 20); }, StoreStatus::keyDamaged},
    {"newer key file", [](auto& test) { test.flip(test.key(), 7); }, StoreStatus::newerFormat},
    {"key of another suite",
     [](auto& test) {
         const std::string other = hexadecimal(storeID("suite")) + ".key";
         fs::copy(test.key().parent_path() / other, test.key(), fs::copy_options::overwrite_existing);
     },
     StoreStatus::keyMismatch},

    {"data lost", [](auto& test) { fs::remove_all(test.folder()); }, StoreStatus::rolledBack},
    {"data emptied",
     [](auto& test) {
         fs::resize_file(test.database(), 0);
         fs::remove(test.log());
     },
     StoreStatus::rolledBack},
    {"log lost", [](auto& test) { fs::remove(test.log()); }, StoreStatus::rolledBack},
    {"last bit of the log flipped", [](auto& test) { test.flip(test.log(), 32 + 11 * (24 + 4096) - 1); },
     StoreStatus::rolledBack},
    {"older files put back",
     [](auto& test) {
         fs::copy(test.data() / "older.db", test.database(), fs::copy_options::overwrite_existing);
         fs::copy(test.data() / "older.wal", test.log(), fs::copy_options::overwrite_existing);
     },
     StoreStatus::rolledBack},
    {"no database",
     [](auto& test) {
         std::ofstream(test.database()) << std::string(8192, 'x');
         fs::remove(test.log());
     },
     StoreStatus::damaged, damaged, damaged, damaged},
    {"newer format of the database", [](auto& test) { test.sql("PRAGMA user_version=2"); },
     StoreStatus::newerFormat},
    {"tables gone", [](auto& test) { test.sql("DROP TABLE entry; DROP TABLE summary"); },
     StoreStatus::damaged},

    {"entry flipped",
     [](auto& test) {
         test.sql(
             "UPDATE entry SET sealed = substr(sealed, 1, 30) || x'00' || substr(sealed, 32) WHERE tag=$a");
     },
     StoreStatus::damaged, damaged, "second", "-"},
    {"entry of a newer format",
     [](auto& test) { test.sql("UPDATE entry SET sealed = x'02' || substr(sealed, 2) WHERE tag=$a"); },
     StoreStatus::damaged, std::string(describe(StoreStatus::newerFormat)), "second", "-"},
    {"entry deleted", [](auto& test) { test.sql("DELETE FROM entry WHERE tag=$a"); }, StoreStatus::damaged,
     damaged, "second", "-"},
    {"entries swapped",
     [](auto& test) {
         test.sql(
             "CREATE TEMP TABLE t AS SELECT * FROM entry;"
             "UPDATE entry SET sealed=(SELECT sealed FROM t WHERE tag=$b) WHERE tag=$a;"
             "UPDATE entry SET sealed=(SELECT sealed FROM t WHERE tag=$a) WHERE tag=$b");
     },
     StoreStatus::damaged, damaged, damaged, "-"},
    {"entry moved to another name",
     [](auto& test) { test.sql("DELETE FROM entry WHERE tag=$a; UPDATE entry SET tag=$a WHERE tag=$c"); },
     StoreStatus::damaged, damaged, "second", "-"},
    {"entry of another suite",
     [](auto& test) {
         const fs::path other =
             test.data() / "test-host/store" / hexadecimal(storeID("suite")) / "entries.db";
         test.sql("ATTACH '" + other.native() +
                  "' AS o; UPDATE entry SET sealed=(SELECT sealed FROM o.entry) WHERE tag=$a");
     },
     StoreStatus::damaged, damaged, "second", "-"},
    {"older entry put back under its name",
     [](auto& test) {
         test.sql("ATTACH '" + (test.data() / "older.rows").native() +
                  "' AS o; UPDATE entry SET sealed=(SELECT sealed FROM o.entry WHERE tag=$a) WHERE tag=$a");
     },
     StoreStatus::rolledBack, std::string(describe(StoreStatus::rolledBack)), "second", "-"},
    {"older summary put back",
     [](auto& test) {
         test.sql("ATTACH '" + (test.data() / "older.rows").native() +
                  "' AS o; UPDATE summary SET sealed=(SELECT sealed FROM o.summary)");
     },
     StoreStatus::rolledBack},
    {"summary deleted", [](auto& test) { test.sql("DELETE FROM summary"); }, StoreStatus::damaged, "first",
     "second", damaged},
    {"summary flipped",
     [](auto& test) {
         test.sql("UPDATE summary SET sealed = substr(sealed, 1, 60) || x'00' || substr(sealed, 62)");
     },
     StoreStatus::damaged, "first", "second", damaged},
};

class EveryDamage : public StoreDamageTest, public ::testing::WithParamInterface<Row> {};

TEST_P(EveryDamage, IsToldAndHarmsNothingElse) {
    const Row& row = GetParam();
    fill();
    row.happens(*this);
    const bool hadKey = fs::exists(fs::symlink_status(key()));
    const SecureDefaults store = SecureDefaults::shared();
    EXPECT_TRUE(store.isKeyCreated());

    // What is wrong with an entry shows where it is read or looked for, and when everything is verified.
    const bool isInEntries = row.none == "-";
    EXPECT_EQ(store.status(), isInEntries ? StoreStatus::ok : row.status);
    const std::string reason(describe(row.status));
    EXPECT_EQ(readText(store, "a"), row.a.empty() ? reason : row.a);
    EXPECT_EQ(readText(store, "b"), row.b.empty() ? reason : row.b);
    EXPECT_EQ(readText(store, "none"), row.none.empty() ? reason : row.none);
    EXPECT_EQ(store.verify().status, row.status);
    EXPECT_EQ(faults.empty(), row.status == StoreStatus::ok);
    if (faults.empty()) return;

    EXPECT_EQ(faults.front().domain, "test-host");
    EXPECT_EQ(lines.front(), "The encrypted store \"test-host\": " +
                                 (isInEntries && row.a != "first" ? row.a : reason) + ".");
    EXPECT_EQ(lines.size(), faults.size());
    EXPECT_NE(store.setPassword("another"), StoreStatus::ok);
    EXPECT_EQ(fs::exists(fs::symlink_status(key())), hadKey);

    // A backup that was put back whole counts once it is accepted, and nothing else does.
    const std::string_view name(row.name);
    const bool isBackup =
        row.status == StoreStatus::rolledBack && !isInEntries && !name.starts_with("older summary");
    EXPECT_EQ(store.acceptRestored() == StoreStatus::ok, isBackup);
    EXPECT_TRUE(!isBackup || store.set("a", "accepted") == StoreStatus::ok);

    EXPECT_EQ(store.reset(), StoreStatus::ok);
    EXPECT_EQ(store.setPassword("another"), StoreStatus::ok);
    EXPECT_EQ(store.set("a", "anew"), StoreStatus::ok);
    reopen();
    EXPECT_EQ(readText(store, "a"), "anew");
    EXPECT_EQ(store.verify().status, StoreStatus::ok);
}

INSTANTIATE_TEST_SUITE_P(Store, EveryDamage, ::testing::ValuesIn(rows), [](const auto& test) {
    std::string name = test.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

// Writes go on in a store of which something is damaged; one over the broken entry ends that, as a clear
// does.
TEST_F(StoreDamageTest, GoesOnBesideTheDamage) {
    fill();
    sql("UPDATE entry SET sealed = x'00' WHERE tag=$a");
    const SecureDefaults store = SecureDefaults::shared();
    EXPECT_EQ(store.set("b", "rewritten"), StoreStatus::ok);
    EXPECT_EQ(readText(store, "b"), "rewritten");
    EXPECT_THAT(store.keys(), ::testing::ElementsAre("b", "c"));
    const StoreReport report = store.verify();
    EXPECT_EQ(report.readable, 2U);
    EXPECT_EQ(report.damaged, 1U);
    EXPECT_EQ(store.set("a", "anew"), StoreStatus::ok);
    EXPECT_EQ(readText(store, "none"), "-");
    reopen();
    EXPECT_EQ(store.verify().status, StoreStatus::ok);
    EXPECT_EQ(readText(store, "a"), "anew");

    sql("UPDATE entry SET sealed = x'00' WHERE tag=$b; DELETE FROM entry WHERE tag=$c");
    EXPECT_EQ(store.remove("b"), StoreStatus::ok);
    reopen();
    EXPECT_EQ(readText(store, "c"), damaged);  // still missed
    EXPECT_EQ(readText(store, "a"), "anew");
    EXPECT_EQ(SecureDefaults::removePersistentDomain("test-host"), StoreStatus::ok);
    EXPECT_EQ(readText(store, "a"), "-");
    EXPECT_EQ(store.verify().status, StoreStatus::ok);
}

// What a process keeps of an open store shows no longer once its files are others.
TEST_F(StoreDamageTest, NothingOldShowsInAnOpenStore) {
    fill();
    const SecureDefaults store = SecureDefaults::shared();
    EXPECT_EQ(readText(store, "a"), "first");
    SequenceFile another(last());  // another process, which learns of its file's removal by the next write
    another.attach();
    fs::remove(last());
    EXPECT_EQ(store.set("a", "anew"), StoreStatus::ok);
    EXPECT_NE(another.page()->isRetired, 0);
    EXPECT_EQ(readText(store, "a"), "anew");

    // A process is late in telling of its write, when another has announced the next one.
    const auto root = loadKeyFile(key());
    ASSERT_TRUE(root.ok());
    const StoreSealer sealer(root.value(), id);
    SequenceFile other(last());
    const std::uint64_t sequence = sealer.openSequence(other.content()).value_or(0);
    EXPECT_TRUE(store.changeMark());
    EXPECT_EQ(other.announce(sequence + 1), StoreStatus::ok);
    other.tell(sealer.sealSequence(sequence));
    EXPECT_FALSE(store.changeMark());
    other.tell(sealer.sealSequence(sequence + 1));
    EXPECT_TRUE(store.changeMark());
    other.set(sealer.sealSequence(sequence));

    // Another process moved the store aside without having been able to write to it.
    other.retire();
    EXPECT_EQ(StoreFiles(id).moveAside(), StoreStatus::ok);
    EXPECT_NE(readText(store, "a"), "anew");
}

// Anywhere in the files: no value is ever wrong or plainly absent, and nothing is wrong without being told.
TEST_F(StoreDamageTest, FlippedBytesNeverGiveAWrongValue) {
    std::mt19937 random(11);
    const SecureDefaults store = storeWithKey();
    const auto valueOf = [](int i) { return std::string(100, 'x') + std::to_string(i); };
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 50; ++i) store.set(std::to_string(i), valueOf(i));
        if (round == 1) sql("PRAGMA wal_checkpoint(TRUNCATE)");  // so that both files hold what counts
    }
    reopen();
    std::map<fs::path, std::string> contents;
    for (const fs::path& file : {database(), log(), key(), fs::path(key()).replace_extension(".last")}) {
        std::ifstream stream(file, std::ios::binary);
        contents[file].assign(std::istreambuf_iterator<char>(stream), {});
    }
    int harmed = 0, served = 0;
    for (int trial = 0; trial < 300; ++trial) {
        fs::remove(log().native().substr(0, log().native().size() - 3) + "shm");
        for (const auto& [file, content] : contents) std::ofstream(file, std::ios::binary) << content;
        // The data in most trials; of the log, the part that was written to.
        const auto& [file, content] =
            *std::next(contents.begin(), trial % 10 < 8 ? trial % 2 : trial % 10 - 6);
        const std::size_t size = std::min(content.size(), content.find_last_not_of('\0') + 1);
        for (int bytes = trial % 4; bytes >= 0; --bytes)
            flip(file, static_cast<std::streamoff>(random() % size));
        const StoreReport report = store.verify();
        bool isHarmed = false;
        for (int i = 0; i < 50; ++i) {
            const std::string text = readText(store, std::to_string(i));
            const bool isRight = text == valueOf(i);
            served += isRight ? 1 : 0;
            isHarmed |= !isRight;
            EXPECT_TRUE(isRight || (text != "-" && text[0] != 'x')) << trial << ": " << text;
        }
        EXPECT_TRUE(!isHarmed || report.status != StoreStatus::ok) << trial;
        harmed += report.status != StoreStatus::ok ? 1 : 0;
    }
    EXPECT_GT(harmed, 100);
    EXPECT_GT(served, 100 * 50);
    RecordProperty("harmed", harmed);
}

TEST_F(StoreDamageTest, PlaceThatCannotBeWrittenTo) {
    fill();
    fs::create_directories(data() / "empty");
    const uid_t user = ::geteuid() == 0 ? 65534 : ::geteuid();  // root may write anywhere
    for (const auto& root : {directory(), data(), state()}) EXPECT_EQ(::chown(root.c_str(), user, user), 0);
    for (const auto& file : files()) {
        EXPECT_EQ(::chown(file.c_str(), user, user), 0);
        ::chmod(file.c_str(), fs::is_directory(file) ? 0500 : 0400);
    }
    EXPECT_TRUE(inChild([&] {
        if (::setuid(user) != 0) return false;
        const SecureDefaults store = SecureDefaults::shared();
        const bool opened = store.status() == StoreStatus::readOnly;
        const bool read = readText(store, "a") == describe(StoreStatus::readOnly);
        ::setenv("XDG_DATA_HOME", (data() / "empty").c_str(), 1);
        return opened && read && store.set("a", "x") == StoreStatus::readOnly &&
               SecureDefaults::suite("new")->setPassword("p") == StoreStatus::readOnly;
    }));
    for (const auto& file : files()) ::chmod(file.c_str(), 0700);
}

}  // namespace
}  // namespace torvel
