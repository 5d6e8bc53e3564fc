#pragma once  // internal

#include "TorvelPlatform/defaults/FilePlace.h"
#include "TorvelPlatform/defaults/StoreStatus.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <array>
#include <filesystem>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace torvel {

// One connection to a file of sealed entries by tag, and one sealed summary of them: SQLite in its
// write-ahead mode. A committed change is on disk, by one sync of the log; two more are paid where the log is
// folded into the file and one where it starts over. Other processes' changes are seen at once. One thread at
// a time; never across a fork.
class Database {
  public:
    // For open() alone.
    explicit Database(const std::filesystem::path& file);

    // Makes the file, for the user alone, where there is none; its directory must be there.
    static Outcome<std::unique_ptr<Database>, StoreStatus> open(const std::filesystem::path& file);

    // Whether it holds nothing at all, not even the table of entries.
    Outcome<bool, StoreStatus> isEmpty();
    // Makes the tables and puts a summary, unless another process was faster.
    StoreStatus create(std::string_view sealedSummary);

    using Found = Outcome<std::optional<std::string>, StoreStatus>;
    Found find(std::string_view tag);
    StoreStatus put(std::string_view tag, std::string_view sealed);
    StoreStatus erase(std::string_view tag);
    StoreStatus eraseAll();
    Found summary();
    StoreStatus putSummary(std::string_view sealed);
    // The entries between two tags, which may be none of any.
    StoreStatus forEach(std::string_view after, std::string_view before,
                        const std::function<void(std::string_view tag, std::string_view sealed)>& visit);

    // Writes the log over by what it holds, and forces that to disk: after a sync that failed the system
    // would not write it again, however often it is synced. Within a transaction for writing.
    StoreStatus rewriteLog();

    // What is wrong with the structure of the file; "ok" when nothing is.
    std::string integrity();
    // Takes the entries out of the way of every other connection, for a file about to be moved aside.
    StoreStatus retire();
    // Whether the file is no longer the one under its name in the directory of its own.
    bool hasMoved() const { return !m_place.isUnchanged(); }

    // Lasts until it is committed or given up.
    class Transaction {
      public:
        enum Kind { reading, writing };
        Transaction(Database& database, Kind kind);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;

        StoreStatus status() const { return m_status; }  // why it could not begin, or ok
        StoreStatus commit();

      private:
        Database& m_database;
        StoreStatus m_status;
        bool m_isOpen;
    };

  private:
    enum Query {
        beginReading,
        beginWriting,
        commit,
        rollback,
        select,
        upsert,
        remove,
        removeAll,
        between,
        selectSummary,
        upsertSummary,
        queryCount
    };
    struct CloseConnection {
        void operator()(sqlite3* connection) const;
    };
    struct FinalizeStatement {
        void operator()(sqlite3_stmt* statement) const;
    };
    using StatementPtr = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;
    class Run;

    StoreStatus makeFile(const std::filesystem::path& file);
    StoreStatus connect(const std::filesystem::path& file);
    StoreStatus checkFormat();
    StoreStatus reserveLog();
    StoreStatus execute(const char* statements);
    Found first(Query query, std::initializer_list<std::string_view> values = {});
    StoreStatus run(Query query, std::initializer_list<std::string_view> values = {});
    Outcome<int, StoreStatus> number(const char* question);
    StoreStatus statusOf(int code) const;
    std::filesystem::path file() const;

    FilePlace m_place;
    std::unique_ptr<sqlite3, CloseConnection> m_connection;
    std::array<StatementPtr, queryCount> m_statements;  // prepared at their first use; closed first
};

}  // namespace torvel
