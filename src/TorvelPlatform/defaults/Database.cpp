#include "TorvelPlatform/defaults/Database.h"

#include "TorvelPlatform/defaults/Descriptor.h"
#include "TorvelPlatform/defaults/StoreKey.h"
#include "TorvelPlatform/foundation/UserDirectories.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

namespace torvel {
namespace fs = std::filesystem;
namespace {

// The log is written over and over within this size; a file that grows costs twice the time to sync.
constexpr off_t reservedLog = 1 << 20;

constexpr const char* set_up =
    "PRAGMA page_size=2048;"  // the least that the summary fits: few bytes to write for a put
    "PRAGMA synchronous=FULL;"
    "PRAGMA wal_autocheckpoint=400;"  // pages: folded in before the reserved log is full
    "PRAGMA cell_size_check=ON;"
    "PRAGMA trusted_schema=OFF;"
    "PRAGMA temp_store=MEMORY;";

constexpr const char* creation =
    "CREATE TABLE entry(tag BLOB PRIMARY KEY, sealed BLOB NOT NULL) WITHOUT ROWID;"
    "CREATE TABLE summary(one INTEGER PRIMARY KEY, sealed BLOB NOT NULL);"  // fits a page
    "PRAGMA application_id=0x54565331;"                                     // "TVS1"
    "PRAGMA user_version=1;";

constexpr std::array queries{
    "BEGIN",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "SELECT sealed FROM entry WHERE tag=?1",
    "INSERT INTO entry VALUES(?1, ?2) ON CONFLICT(tag) DO UPDATE SET sealed=excluded.sealed",
    "DELETE FROM entry WHERE tag=?1",
    "DELETE FROM entry",
    "SELECT tag, sealed FROM entry WHERE tag>?1 AND tag<?2 ORDER BY tag",
    "SELECT sealed FROM summary WHERE one=1",
    "INSERT OR REPLACE INTO summary VALUES(1, ?1)",
};

std::string_view blob(sqlite3_stmt* statement, int column) {
    const void* const bytes = sqlite3_column_blob(statement, column);
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
    return {static_cast<const char*>(bytes), bytes != nullptr ? size : 0};
}

// Writes a file over by what it holds, and by zeros from its end up to a size; forces that to disk.
StoreStatus rewrite(const fs::path& file, off_t from, off_t size) {
    std::array<char, 64 * 1024> block;
    const Descriptor opened(::open(file.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    if (!opened) return statusOfSystemError(errno);
    for (off_t at = from; at < size;) {
        const auto wanted = static_cast<std::size_t>(std::min<off_t>(size - at, block.size()));
        const ssize_t present = ::pread(opened.get(), block.data(), wanted, at);
        if (present < 0) return statusOfSystemError(errno);
        std::fill(block.begin() + present, block.end(), '\0');
        const ssize_t written = ::pwrite(opened.get(), block.data(), wanted, at);
        if (written <= 0) return statusOfSystemError(errno);
        at += written;
    }
    return ::fsync(opened.get()) == 0 ? StoreStatus::ok : statusOfSystemError(errno);
}

off_t sizeOf(const fs::path& file) {
    struct stat status {};
    return ::stat(file.c_str(), &status) == 0 ? status.st_size : 0;
}

}  // namespace

void Database::CloseConnection::operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }
void Database::FinalizeStatement::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

// A prepared statement with its values, reset when it is done with.
class Database::Run {
  public:
    Run(Database& database, Query query, std::initializer_list<std::string_view> values)
        : m_statement(database.m_statements[query]) {
        if (!m_statement) {
            sqlite3_stmt* prepared = nullptr;
            m_code = sqlite3_prepare_v3(database.m_connection.get(), queries[query], -1,
                                        SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
            m_statement.reset(prepared);
        }
        int place = 0;
        for (const std::string_view value : values) {
            if (m_code != SQLITE_OK) break;
            const char* const bytes = value.empty() ? "" : value.data();  // nullptr would be NULL
            m_code = sqlite3_bind_blob64(m_statement.get(), ++place, bytes, value.size(), SQLITE_STATIC);
        }
    }
    ~Run() { sqlite3_reset(m_statement.get()); }
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    int step() { return m_code == SQLITE_OK ? sqlite3_step(m_statement.get()) : m_code; }
    std::string_view column(int index) const { return blob(m_statement.get(), index); }

  private:
    StatementPtr& m_statement;
    int m_code = SQLITE_OK;
};

StoreStatus Database::statusOf(int code) const {
    switch (code & 0xFF) {
        case SQLITE_OK:
        case SQLITE_ROW:
        case SQLITE_DONE:
            return StoreStatus::ok;
        case SQLITE_ERROR:  // the table is not there
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            return StoreStatus::damaged;
        case SQLITE_FULL:
            return StoreStatus::diskFull;
        case SQLITE_READONLY:
            return StoreStatus::readOnly;
        case SQLITE_BUSY:
            return StoreStatus::busy;
        case SQLITE_TOOBIG:
            return StoreStatus::invalidValue;
        default:
            return code == SQLITE_IOERR_SHORT_READ
                       ? StoreStatus::damaged
                       : statusOfSystemError(sqlite3_system_errno(m_connection.get()));
    }
}

Outcome<std::unique_ptr<Database>, StoreStatus> Database::open(const fs::path& file) {
    std::error_code failed;
    const fs::path directory = fs::canonical(file.parent_path(), failed);  // SQLite is told to follow no link
    if (failed) return statusOfSystemError(failed.value());
    auto database = std::make_unique<Database>(directory / file.filename());
    const StoreStatus status = database->connect(directory / file.filename());
    if (status != StoreStatus::ok) return status;
    return database;
}

// Its own directory counts as part of the name: a store is moved aside together with it.
Database::Database(const fs::path& file)
    : m_place(file.parent_path().parent_path(), file.parent_path().filename() / file.filename()) {}

StoreStatus Database::makeFile(const fs::path& file) {
    const Descriptor opened(
        ::open(file.c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!opened || ::fchmod(opened.get(), S_IRUSR | S_IWUSR) != 0) return statusOfSystemError(errno);
    m_place.remember(opened.get());
    return StoreStatus::ok;
}

StoreStatus Database::connect(const fs::path& file) {
    StoreStatus status = makeFile(file);
    if (status != StoreStatus::ok) return status;
    sqlite3* opened = nullptr;
    const int flags =
        SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int code = sqlite3_open_v2(file.c_str(), &opened, flags, nullptr);
    m_connection.reset(opened);
    if (code != SQLITE_OK) return statusOf(code);

    sqlite3_busy_timeout(opened, 5000);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    sqlite3_db_config(opened, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    int keepLog = 1;
    sqlite3_file_control(opened, "main", SQLITE_FCNTL_PERSIST_WAL, &keepLog);
    status = execute(set_up);
    if (status == StoreStatus::ok) status = checkFormat();
    if (status == StoreStatus::ok) status = execute("PRAGMA journal_mode=WAL");
    return status == StoreStatus::ok ? reserveLog() : status;
}

StoreStatus Database::checkFormat() {
    const auto version = number("PRAGMA user_version");
    if (!version) return version.error();
    if (version.value() > 1) return StoreStatus::newerFormat;
    const auto empty = isEmpty();
    if (!empty) return empty.error();
    return (version.value() == 0) == empty.value() ? StoreStatus::ok : StoreStatus::damaged;
}

fs::path Database::file() const { return sqlite3_db_filename(m_connection.get(), "main"); }

// Under the write lock, as nobody else writes to the log meanwhile.
StoreStatus Database::reserveLog() {
    const Transaction transaction(*this, Transaction::writing);
    if (transaction.status() != StoreStatus::ok) return transaction.status();
    const fs::path log = file().native() + "-wal";
    const off_t size = sizeOf(log);
    return size < reservedLog ? rewrite(log, size, reservedLog) : StoreStatus::ok;
}

StoreStatus Database::rewriteLog() {
    const fs::path log = file().native() + "-wal";
    return rewrite(log, 0, sizeOf(log));
}

StoreStatus Database::execute(const char* statements) {
    return statusOf(sqlite3_exec(m_connection.get(), statements, nullptr, nullptr, nullptr));
}

StoreStatus Database::run(Query query, std::initializer_list<std::string_view> values) {
    return statusOf(Run(*this, query, values).step());
}

Outcome<int, StoreStatus> Database::number(const char* question) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v2(m_connection.get(), question, -1, &prepared, nullptr);
    const StatementPtr statement(prepared);
    if (code != SQLITE_OK) return statusOf(code);
    const int stepped = sqlite3_step(prepared);
    if (stepped != SQLITE_ROW) return stepped == SQLITE_DONE ? StoreStatus::damaged : statusOf(stepped);
    return sqlite3_column_int(prepared, 0);
}

Outcome<bool, StoreStatus> Database::isEmpty() {
    const auto tables = number("SELECT count(*) FROM sqlite_schema");
    if (!tables) return tables.error();
    return tables.value() == 0;
}

StoreStatus Database::create(std::string_view sealedSummary) {
    Transaction transaction(*this, Transaction::writing);
    if (transaction.status() != StoreStatus::ok) return transaction.status();
    const auto empty = isEmpty();
    if (!empty) return empty.error();
    if (!empty.value()) return StoreStatus::ok;
    StoreStatus status = execute(creation);
    if (status == StoreStatus::ok) status = putSummary(sealedSummary);
    if (status == StoreStatus::ok) status = transaction.commit();
    if (status != StoreStatus::ok) return status;
    return syncDirectory(file().parent_path()) ? StoreStatus::ok : statusOfSystemError(errno);
}

Database::Found Database::first(Query query, std::initializer_list<std::string_view> values) {
    Run run(*this, query, values);
    const int code = run.step();
    if (code == SQLITE_ROW) return std::optional(std::string(run.column(0)));
    if (code == SQLITE_DONE) return std::optional<std::string>();
    return statusOf(code);
}

Database::Found Database::find(std::string_view tag) { return first(select, {tag}); }
Database::Found Database::summary() { return first(selectSummary); }
StoreStatus Database::putSummary(std::string_view sealed) { return run(upsertSummary, {sealed}); }

StoreStatus Database::put(std::string_view tag, std::string_view sealed) {
    return run(upsert, {tag, sealed});
}
StoreStatus Database::erase(std::string_view tag) { return run(remove, {tag}); }
StoreStatus Database::eraseAll() { return run(removeAll); }

StoreStatus Database::forEach(
    std::string_view after, std::string_view before,
    const std::function<void(std::string_view tag, std::string_view sealed)>& visit) {
    Run run(*this, between, {after, before});
    int code;
    while ((code = run.step()) == SQLITE_ROW) visit(run.column(0), run.column(1));
    return statusOf(code);
}

std::string Database::integrity() {
    sqlite3_stmt* prepared = nullptr;
    sqlite3_prepare_v2(m_connection.get(), "PRAGMA integrity_check(1)", -1, &prepared, nullptr);
    const StatementPtr statement(prepared);
    if (sqlite3_step(prepared) != SQLITE_ROW) return sqlite3_errmsg(m_connection.get());
    return std::string(blob(prepared, 0));
}

StoreStatus Database::retire() { return execute("ALTER TABLE entry RENAME TO retired"); }

Database::Transaction::Transaction(Database& database, Kind kind)
    : m_database(database),
      m_status(database.run(kind == writing ? beginWriting : beginReading)),
      m_isOpen(m_status == StoreStatus::ok) {}

Database::Transaction::~Transaction() {
    if (m_isOpen) m_database.run(rollback);
}

StoreStatus Database::Transaction::commit() {
    const StoreStatus status = m_database.run(Database::commit);
    m_isOpen = status != StoreStatus::ok;
    return status;
}

}  // namespace torvel
