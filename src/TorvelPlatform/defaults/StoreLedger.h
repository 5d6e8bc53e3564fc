#pragma once  // internal

#include "TorvelPlatform/defaults/Database.h"
#include "TorvelPlatform/defaults/SealedEntry.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"

#include <bitset>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// What a store must hold, by which it is told that an entry is gone or an older one was put back. An entry
// belongs to one of 256 buckets by the first byte of its tag. The sealed summary holds the sequence number of
// the last write and, of each bucket, the number of its entries and a sum of their keyed digests. A write
// changes entry and summary in one transaction: two pages. A bucket is checked when this process first reads
// or writes in it, which costs the reading of a 256th of the store; opening a store costs that of the summary
// alone.
class StoreLedger {
  public:
    StoreLedger(const StoreSealer& sealer, Database& database) : m_sealer(sealer), m_database(database) {}

    Outcome<StoreSummary, StoreStatus> summary();
    StoreStatus put(const StoreSummary& summary);

    // Whether the bucket of a tag has been found whole since the store was opened.
    bool isWhole(std::string_view tag) const;
    // Within a transaction: whether the bucket of a tag holds what was written last. damaged: entries are
    // broken or gone, what can be read is the newest; rolledBack: any of them may be an older one.
    StoreStatus check(std::string_view tag);

    struct Change {
        std::string_view tag;
        const std::optional<std::string>& old;     // what lies there, or absent
        bool isOldIntact;                          // known to be, which spares the opening of it
        const std::optional<std::string>& sealed;  // what is to lie there, or absent
    };
    using Mark = SecureDefaults::ChangeMark;
    // Within a transaction: makes a change. The mark that stands, where there is one, spares the reading of
    // the summary if it is that of the last write made here. Gives the write's sequence number.
    Outcome<std::uint64_t, StoreStatus> make(const Change& change, const std::optional<Mark>& mark);
    // After what was put has been committed: the mark of it.
    void committed(const Mark& mark) {
        m_committed = m_written;
        m_mark = mark;
    }

    struct Content {
        StoreStatus status = StoreStatus::ok;  // the gravest of its buckets'
        std::size_t damaged = 0;               // entries
        std::vector<std::string> names;        // of the others
    };
    // Everything.
    Content walk();

  private:
    struct Bucket {
        StoreStatus status = StoreStatus::ok;  // of its reading
        BucketSum found;
        Content content;  // where entries are opened
    };
    Bucket read(std::size_t number, bool opensEntries);
    static StoreStatus judge(const Bucket& bucket, const BucketSum& expected);

    const StoreSealer& m_sealer;
    Database& m_database;
    std::bitset<bucketCount> m_isWhole;  // known to be
    StoreSummary m_written;              // the summary that was put last
    StoreSummary m_committed;            // the last that was also committed
    std::optional<Mark> m_mark;          // since then
};

}  // namespace torvel
