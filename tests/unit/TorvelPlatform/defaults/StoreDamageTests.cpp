#include "TorvelPlatform/defaults/SealedEntry.h"
#include "TorvelPlatform/defaults/SequenceFile.h"
#include "TorvelPlatform/defaults/StoreEngine.h"
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

using enum StoreStatus;

std::vector<StoreFault> faults;
std::vector<std::string> lines;

// A store of the entries a, b and c ("first", "second", "third"), another suite, and what an attacker or a
// failing disk does to their files.
struct StoreDamageTest : testing::StoreTest {
    StoreDamageTest() {
        SecureDefaults::setDamageHandler([](const StoreFault& fault) { faults.push_back(fault); });
        setDiagnosticSink(
            [](std::string_view line, const std::source_location&) { lines.emplace_back(line); });
        ::setenv("KEY", key().c_str(), 1);
        ::setenv("OTHER_KEY", key("suite").c_str(), 1);
        ::setenv("DB", database().c_str(), 1);
        ::setenv("LOG", log().c_str(), 1);
        ::setenv("OLDER", (directory() / "older").c_str(), 1);
    }

    static inline const StoreID id = storeID("test-host");
    fs::path database(std::string_view suite = "test-host") const {
        return data() / "test-host/store" / hexadecimal(storeID(suite)) / "entries.db";
    }
    fs::path log() const { return database().native() + "-wal"; }
    fs::path last() const { return fs::path(key()).replace_extension(".last"); }
    fs::path key(std::string_view suite = "test-host") const {
        return state() / "test-host/keys" / (hexadecimal(storeID(suite)) + ".key");
    }

    void fill() const {
        EXPECT_EQ(storeWithKey("suite").set("a", "foreign"), ok);
        const SecureDefaults store = storeWithKey();
        EXPECT_EQ(store.set("a", "older"), ok);
        shell("cp $DB $OLDER.db && cp $LOG $OLDER.wal");
        sql("CREATE TABLE older.entry AS SELECT * FROM entry;"
            "CREATE TABLE older.summary AS SELECT * FROM summary");
        EXPECT_EQ(store.set("a", "first"), ok);
        EXPECT_EQ(store.set("b", "second"), ok);
        EXPECT_EQ(store.set("c", "third"), ok);
        reopen();
    }

    // Without a separator of words, so that the paths may hold spaces.
    static void shell(const std::string& command) { EXPECT_EQ(std::system(("IFS=; " + command).c_str()), 0); }

    // What another tool does to the database; $a stands for the tag of an entry.
    void sql(std::string statements) const {
        statements = "ATTACH '" + (directory() / "older.rows").native() + "' AS older; ATTACH '" +
                     database("suite").native() + "' AS other;" + statements;
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

    static void flip(const fs::path& file, std::streamoff at) {
        std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
        stream.seekg(at);
        const char byte = static_cast<char>(stream.get() ^ 0x10);
        stream.seekp(at);
        stream.put(byte);
    }
};

const std::string bad(describe(damaged)), newer(describe(newerFormat)), older(describe(rolledBack));

// What happens to the files of a store that is closed, and what it says when it is opened again.
struct Row {
    const char* name;
    const char* damage;  // in SQL, which begins in upper case, else for the shell
    StoreStatus status;
    // What reading a, b and a name that never was gives; empty: what the status says.
    std::string a = {}, b = {}, none = {};
};

void PrintTo(const Row& row, std::ostream* out) { *out << row.name; }

const Row rows[] = {
    {"nothing", ":", ok, "first", "second", "-"},
    {"key file lost", "rm $KEY", keyMissing},
    {"key file readable by others", "chmod 640 $KEY", keyUnsafe},
    {"key folder writable by others", "chmod 770 $(dirname $KEY)", keyUnsafe},
    {"key file a link", "mv $KEY $KEY.real && ln -s $KEY.real $KEY", keyUnsafe},
    {"key file a pipe", "rm $KEY && mkfifo -m 600 $KEY", keyUnsafe},
    {"key file cut", "truncate -s 40 $KEY", keyDamaged},
    {"key written over", "printf XXXX | dd of=$KEY bs=1 seek=20 conv=notrunc status=none", keyDamaged},
    {"newer key file", "printf '\\021' | dd of=$KEY bs=1 seek=7 conv=notrunc status=none", newerFormat},
    {"key of another suite", "cat $OTHER_KEY >$KEY", keyMismatch},

    {"data lost", "rm -r $(dirname $DB)", rolledBack},
    {"data emptied", "truncate -s 0 $DB && rm $LOG", rolledBack},
    {"log lost", "rm $LOG", rolledBack},
    {"last byte of the log",
     "printf X | dd of=$LOG bs=1 seek=$((32 + 11 * 2072 - 1)) conv=notrunc status=none", rolledBack},
    {"older files put back", "cp $OLDER.db $DB && cp $OLDER.wal $LOG", rolledBack},
    {"no database", "yes | head -c 8192 >$DB; rm $LOG", damaged, bad, bad, bad},
    {"newer format of the database", "PRAGMA user_version=2", newerFormat},
    {"tables gone", "DROP TABLE entry; DROP TABLE summary", damaged},

    {"entry flipped",
     "UPDATE entry SET sealed=substr(sealed, 1, 30) || x'00' || substr(sealed, 32) WHERE tag=$a", damaged,
     bad, "second", "-"},
    {"entry of a newer format", "UPDATE entry SET sealed=x'02' || substr(sealed, 2) WHERE tag=$a", damaged,
     newer, "second", "-"},
    {"entry deleted", "DELETE FROM entry WHERE tag=$a", damaged, bad, "second", "-"},
    {"entries swapped",
     "CREATE TEMP TABLE t AS SELECT * FROM entry;"
     "UPDATE entry SET sealed=(SELECT sealed FROM t WHERE tag=$b) WHERE tag=$a;"
     "UPDATE entry SET sealed=(SELECT sealed FROM t WHERE tag=$a) WHERE tag=$b",
     damaged, bad, bad, "-"},
    {"entry moved to another name", "DELETE FROM entry WHERE tag=$a; UPDATE entry SET tag=$a WHERE tag=$c",
     damaged, bad, "second", "-"},
    {"entry of another suite", "UPDATE entry SET sealed=(SELECT sealed FROM other.entry) WHERE tag=$a",
     damaged, bad, "second", "-"},
    {"older entry put back under its name",
     "UPDATE entry SET sealed=(SELECT sealed FROM older.entry WHERE tag=$a) WHERE tag=$a", rolledBack, older,
     "second", "-"},
    {"older summary put back", "UPDATE summary SET sealed=(SELECT sealed FROM older.summary)", rolledBack},
    {"summary deleted", "DELETE FROM summary", damaged, "first", "second", bad},
    {"summary flipped", "UPDATE summary SET sealed=substr(sealed, 1, 60) || x'00' || substr(sealed, 62)",
     damaged, "first", "second", bad},
};

class EveryDamage : public StoreDamageTest, public ::testing::WithParamInterface<Row> {};

TEST_P(EveryDamage, IsToldAndHarmsNothingElse) {
    const Row& row = GetParam();
    fill();
    std::isupper(*row.damage) ? sql(row.damage) : shell(row.damage);
    const bool hadKey = fs::exists(fs::symlink_status(key()));
    const SecureDefaults store = SecureDefaults::shared();
    EXPECT_TRUE(store.isKeyCreated());

    // What is wrong with an entry shows where it is read or looked for, and when everything is verified.
    const bool isInEntries = row.none == "-";
    EXPECT_EQ(store.status(), isInEntries ? ok : row.status);
    const std::string reason(describe(row.status));
    EXPECT_EQ(readText(store, "a"), row.a.empty() ? reason : row.a);
    EXPECT_EQ(readText(store, "b"), row.b.empty() ? reason : row.b);
    EXPECT_EQ(readText(store, "none"), row.none.empty() ? reason : row.none);
    EXPECT_EQ(store.verify().status, row.status);
    EXPECT_EQ(faults.empty(), row.status == ok);
    if (faults.empty()) return;

    EXPECT_EQ(faults.front().domain, "test-host");
    EXPECT_EQ(lines.front(), "The encrypted store \"test-host\": " +
                                 (isInEntries && row.a != "first" ? row.a : reason) + ".");
    EXPECT_EQ(lines.size(), faults.size());
    EXPECT_NE(store.setPassword("another"), ok);
    EXPECT_EQ(fs::exists(fs::symlink_status(key())), hadKey);

    // A backup that was put back whole counts once it is accepted, and nothing else does.
    const std::string_view name(row.name);
    const bool isBackup = row.status == rolledBack && !isInEntries && !name.starts_with("older summary");
    EXPECT_EQ(store.acceptRestored() == ok, isBackup);
    EXPECT_TRUE(!isBackup || store.set("a", "accepted") == ok);

    EXPECT_EQ(store.reset(), ok);
    EXPECT_EQ(store.setPassword("another"), ok);
    EXPECT_EQ(store.set("a", "anew"), ok);
    reopen();
    EXPECT_EQ(readText(store, "a"), "anew");
    EXPECT_EQ(store.verify().status, ok);
}

INSTANTIATE_TEST_SUITE_P(Store, EveryDamage, ::testing::ValuesIn(rows));

// Writes go on in a store of which something is damaged; one over the broken entry ends that, as a clear
// does.
TEST_F(StoreDamageTest, GoesOnBesideTheDamage) {
    fill();
    sql("UPDATE entry SET sealed = x'00' WHERE tag=$a");
    const SecureDefaults store = SecureDefaults::shared();
    EXPECT_EQ(store.set("b", "rewritten"), ok);
    EXPECT_EQ(readText(store, "b"), "rewritten");
    EXPECT_THAT(store.keys(), ::testing::ElementsAre("b", "c"));
    const StoreReport report = store.verify();
    EXPECT_EQ(report.readable, 2U);
    EXPECT_EQ(report.damaged, 1U);
    EXPECT_EQ(store.set("a", "anew"), ok);
    EXPECT_EQ(readText(store, "none"), "-");
    reopen();
    EXPECT_EQ(store.verify().status, ok);
    EXPECT_EQ(readText(store, "a"), "anew");

    sql("UPDATE entry SET sealed = x'00' WHERE tag=$b; DELETE FROM entry WHERE tag=$c");
    EXPECT_EQ(store.remove("b"), ok);
    reopen();
    EXPECT_EQ(readText(store, "c"), bad);  // still missed
    EXPECT_EQ(readText(store, "a"), "anew");
    EXPECT_EQ(SecureDefaults::removePersistentDomain("test-host"), ok);
    EXPECT_EQ(readText(store, "a"), "-");
    EXPECT_EQ(store.verify().status, ok);
}

// What a process keeps of an open store shows no longer once its files are others.
TEST_F(StoreDamageTest, NothingOldShowsInAnOpenStore) {
    fill();
    const SecureDefaults store = SecureDefaults::shared();
    EXPECT_EQ(readText(store, "a"), "first");
    SequenceFile another(last());  // another process, which learns of its file's removal by the next write
    another.attach();
    fs::remove(last());
    EXPECT_EQ(store.set("a", "anew"), ok);
    EXPECT_NE(another.page()->isRetired, 0);
    EXPECT_EQ(readText(store, "a"), "anew");

    // A process is late in telling of its write, when another has announced the next one.
    const auto root = loadKeyFile(key());
    ASSERT_TRUE(root.ok());
    const StoreSealer sealer(root.value(), id);
    SequenceFile other(last());
    const std::uint64_t sequence = sealer.openSequence(other.content()).value_or(0);
    EXPECT_TRUE(store.changeMark());
    EXPECT_EQ(other.announce(sequence + 1), ok);
    other.tell(sealer.sealSequence(sequence));
    EXPECT_FALSE(store.changeMark());
    other.tell(sealer.sealSequence(sequence + 1));
    EXPECT_TRUE(store.changeMark());
    other.set(sealer.sealSequence(sequence));

    // Another process moved the store aside without having been able to write to it.
    other.retire();
    EXPECT_EQ(StoreFiles(id).moveAside(), ok);
    EXPECT_NE(readText(store, "a"), "anew");
}

// Another process came upon the removal of the file first, and nobody has told this one.
TEST_F(StoreDamageTest, NothingIsWrittenOnWhatARemovedFileSays) {
    fill();
    const SecureDefaults store = SecureDefaults::shared();
    EXPECT_EQ(store.set("a", "anew"), ok);
    fs::remove(last());
    EXPECT_EQ(StoreEngine("test-host").write("a", "theirs"), ok);
    EXPECT_EQ(store.set("b", "ours"), ok);
    EXPECT_EQ(readText(store, "a"), "theirs");
    EXPECT_EQ(store.verify().status, ok);
}

// Anywhere in the files: no value is ever wrong or plainly absent, and nothing is wrong without being told.
TEST_F(StoreDamageTest, FlippedBytesNeverGiveAWrongValue) {
    std::mt19937 random(11);
    fill();
    const SecureDefaults store = SecureDefaults::shared();
    const auto valueOf = [](int i) { return std::string(100, 'x') + std::to_string(i); };
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 50; ++i) store.set(std::to_string(i), valueOf(i));
        if (round == 1) sql("PRAGMA wal_checkpoint(TRUNCATE)");  // so that both files hold what counts
    }
    reopen();
    std::map<fs::path, std::string> contents;
    for (const fs::path& file : {database(), log(), key(), last()}) {
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
        EXPECT_TRUE(!isHarmed || report.status != ok) << trial;
        harmed += report.status != ok ? 1 : 0;
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
        const bool opened = store.status() == readOnly;
        const bool read = readText(store, "a") == describe(readOnly);
        ::setenv("XDG_DATA_HOME", (data() / "empty").c_str(), 1);
        return opened && read && store.set("a", "x") == readOnly &&
               SecureDefaults::suite("new")->setPassword("p") == readOnly;
    }));
    for (const auto& file : files()) ::chmod(file.c_str(), 0700);
}

}  // namespace
}  // namespace torvel
