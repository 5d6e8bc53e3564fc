#include "StorePeers.h"

#include "Bench.h"
#include "TorvelPlatform/defaults/StoreKey.h"
#include "TorvelPlatform/foundation/UserDirectories.h"

#include <QSettings>
#include <array>

#include <fcntl.h>
#include <leveldb/db.h>
#include <lmdb.h>
#include <sodium.h>
#include <sqlite3.h>
#include <unistd.h>

namespace torvel::bench {
namespace fs = std::filesystem;
namespace {

constexpr std::size_t nonceSize = crypto_aead_xchacha20poly1305_ietf_NPUBBYTES;
constexpr std::size_t tagSize = 16;
const std::array<unsigned char, crypto_aead_xchacha20poly1305_ietf_KEYBYTES> key{};
const std::array<unsigned char, 34> associated{};  // as long as ours

unsigned char* bytesOf(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

std::string seal(const std::string& plain) {
    std::string sealed(nonceSize + plain.size() + crypto_aead_xchacha20poly1305_ietf_ABYTES, '\0');
    randombytes_buf(bytesOf(sealed), nonceSize);
    std::string copy = plain;
    crypto_aead_xchacha20poly1305_ietf_encrypt(bytesOf(sealed) + nonceSize, nullptr, bytesOf(copy),
                                               copy.size(), associated.data(), associated.size(), nullptr,
                                               bytesOf(sealed), key.data());
    return sealed;
}

std::array<std::uint64_t, 2> tagOf(std::size_t number) {
    return {__builtin_bswap64(number * 0x9E3779B97F4A7C15), number};
}

void must(bool holds) {
    if (!holds) giveUp("a peer failed");
}

Peer lmdb(const fs::path& folder) {
    fs::create_directories(folder);
    MDB_env* environment = nullptr;
    must(mdb_env_create(&environment) == 0 && mdb_env_set_mapsize(environment, 1 << 28) == 0 &&
         mdb_env_open(environment, folder.c_str(), 0, 0600) == 0);
    MDB_txn* transaction = nullptr;
    MDB_dbi table = 0;
    must(mdb_txn_begin(environment, nullptr, 0, &transaction) == 0 &&
         mdb_dbi_open(transaction, nullptr, MDB_CREATE, &table) == 0 && mdb_txn_commit(transaction) == 0);
    return {"lmdb", 1.5, [=](const std::string& name, const std::string& value) {
                std::string sealed = seal(value), copy = name;
                MDB_val mdbKey{copy.size(), copy.data()}, mdbValue{sealed.size(), sealed.data()};
                MDB_txn* writing = nullptr;
                must(mdb_txn_begin(environment, nullptr, 0, &writing) == 0 &&
                     mdb_put(writing, table, &mdbKey, &mdbValue, 0) == 0 && mdb_txn_commit(writing) == 0);
            }};
}

Peer levelDB(const fs::path& folder) {
    leveldb::Options options;
    options.create_if_missing = true;
    leveldb::DB* opened = nullptr;
    must(leveldb::DB::Open(options, folder.native(), &opened).ok());
    return {
        "leveldb", 1.2,
        [store = std::shared_ptr<leveldb::DB>(opened)](const std::string& name, const std::string& value) {
            leveldb::WriteOptions forced;
            forced.sync = true;
            must(store->Put(forced, name, seal(value)).ok());
        }};
}

Peer qtSettings(const fs::path& file) {
    const auto settings =
        std::make_shared<QSettings>(QString::fromStdString(file.native()), QSettings::IniFormat);
    return {"qsettings", 6, [=](const std::string& name, const std::string& value) {
                settings->setValue(QString::fromStdString(name), QByteArray::fromStdString(seal(value)));
                settings->sync();
                must(settings->status() == QSettings::NoError);
            }};
}

}  // namespace

RawFile::RawFile(const fs::path& file) : m_file(::open(file.c_str(), O_RDWR | O_CREAT, 0600)) { overwrite(); }
RawFile::~RawFile() { ::close(m_file); }
void RawFile::overwrite() {
    static const std::array<char, 4096> block{'x'};
    must(::pwrite(m_file, block.data(), block.size(), 0) == 4096 && ::fdatasync(m_file) == 0);
}

std::vector<Peer> otherStores(const fs::path& folder) {
    return {lmdb(folder / "lmdb"), levelDB(folder / "leveldb"), qtSettings(folder / "settings.ini")};
}

fs::path databaseOf(const std::string& suite) {
    return UserDirectories::data() / "store" / hexadecimal(storeID(suite)) / "entries.db";
}

struct BareEngine::Parts {
    sqlite3* connection = nullptr;
    sqlite3_stmt* select = nullptr;
    sqlite3_stmt* update = nullptr;
};

BareEngine::BareEngine(const fs::path& file) : m_parts(std::make_unique<Parts>()) {
    must(sqlite3_open(file.c_str(), &m_parts->connection) == SQLITE_OK);
    sqlite3_db_config(m_parts->connection, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);  // as ours does
    int keepLog = 1;
    sqlite3_file_control(m_parts->connection, "main", SQLITE_FCNTL_PERSIST_WAL, &keepLog);
    must(sqlite3_exec(
             m_parts->connection,
             "PRAGMA page_size=2048; PRAGMA journal_mode=WAL; PRAGMA synchronous=FULL; PRAGMA "
             "wal_autocheckpoint=400;"
             "CREATE TABLE IF NOT EXISTS entry(tag BLOB PRIMARY KEY, sealed BLOB NOT NULL) WITHOUT ROWID",
             nullptr, nullptr, nullptr) == SQLITE_OK);
}
BareEngine::~BareEngine() {
    sqlite3_finalize(m_parts->select);
    sqlite3_finalize(m_parts->update);
    sqlite3_close(m_parts->connection);
}

void BareEngine::fill(std::size_t keys) {
    sqlite3_exec(m_parts->connection, "BEGIN", nullptr, nullptr, nullptr);
    sqlite3_stmt* insert = nullptr;
    sqlite3_prepare_v2(m_parts->connection, "INSERT INTO entry VALUES(?1, ?2)", -1, &insert, nullptr);
    for (std::size_t i = 0; i < keys; ++i) {
        const auto tag = tagOf(i);
        const std::string sealed = seal(std::string(120, 'v'));  // with the name and the kind
        sqlite3_bind_blob(insert, 1, tag.data(), tagSize, SQLITE_TRANSIENT);
        sqlite3_bind_blob(insert, 2, sealed.data(), static_cast<int>(sealed.size()), SQLITE_TRANSIENT);
        must(sqlite3_step(insert) == SQLITE_DONE);
        sqlite3_reset(insert);
    }
    sqlite3_finalize(insert);
    sqlite3_exec(m_parts->connection, "COMMIT", nullptr, nullptr, nullptr);
}

void BareEngine::put(std::size_t number, const std::string& value) {
    if (m_parts->update == nullptr)
        sqlite3_prepare_v3(m_parts->connection, "UPDATE entry SET sealed=?2 WHERE tag=?1", -1,
                           SQLITE_PREPARE_PERSISTENT, &m_parts->update, nullptr);
    const auto tag = tagOf(number);
    const std::string sealed = seal(value);
    sqlite3_bind_blob(m_parts->update, 1, tag.data(), tagSize, SQLITE_STATIC);
    sqlite3_bind_blob(m_parts->update, 2, sealed.data(), static_cast<int>(sealed.size()), SQLITE_STATIC);
    must(sqlite3_step(m_parts->update) == SQLITE_DONE && sqlite3_changes(m_parts->connection) == 1);
    sqlite3_reset(m_parts->update);
}

static std::size_t opened(sqlite3_stmt* row, bool isOurs) {
    const auto* const sealed = static_cast<const unsigned char*>(sqlite3_column_blob(row, 0));
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(row, 0));
    std::string plain(size, '\0');
    unsigned long long length = 0;
    const bool isRight = crypto_aead_xchacha20poly1305_ietf_decrypt(
                             bytesOf(plain), &length, nullptr, sealed + nonceSize, size - nonceSize,
                             associated.data(), associated.size(), sealed, key.data()) == 0;
    must(isRight != isOurs);
    return static_cast<std::size_t>(length);
}

std::size_t BareEngine::read(std::size_t number) {
    if (m_parts->select == nullptr)
        sqlite3_prepare_v3(m_parts->connection, "SELECT sealed FROM entry WHERE tag=?1", -1,
                           SQLITE_PREPARE_PERSISTENT, &m_parts->select, nullptr);
    const auto tag = tagOf(number);
    sqlite3_bind_blob(m_parts->select, 1, tag.data(), tagSize, SQLITE_STATIC);
    must(sqlite3_step(m_parts->select) == SQLITE_ROW);
    const std::size_t length = opened(m_parts->select, false);
    sqlite3_reset(m_parts->select);
    return length;
}

std::size_t BareEngine::readAny() {
    sqlite3_prepare_v2(m_parts->connection, "SELECT sealed FROM entry WHERE tag>=?1 LIMIT 1", -1,
                       &m_parts->select, nullptr);
    std::array<unsigned char, tagSize> tag{0x80};
    sqlite3_bind_blob(m_parts->select, 1, tag.data(), tagSize, SQLITE_STATIC);
    must(sqlite3_step(m_parts->select) == SQLITE_ROW);
    return opened(m_parts->select, true);
}

}  // namespace torvel::bench
