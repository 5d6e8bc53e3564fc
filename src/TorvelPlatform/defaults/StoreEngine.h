#pragma once  // internal

#include "TorvelPlatform/defaults/Database.h"
#include "TorvelPlatform/defaults/EntryCache.h"
#include "TorvelPlatform/defaults/SealedEntry.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "TorvelPlatform/defaults/SequenceFile.h"
#include "TorvelPlatform/defaults/StoreFiles.h"
#include "TorvelPlatform/defaults/StoreLedger.h"

#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// The one engine of a store in this process: its key and its connection, opened at their first use. Every
// operation may be called from any thread; faults are told to the damage handler after it is done.
class StoreEngine {
  public:
    explicit StoreEngine(std::string_view domain);

    const std::string& domain() const { return m_domain; }

    bool isKeyCreated();
    StoreStatus setPassword(std::string_view password);
    StoreStatus status();
    Outcome<std::optional<PropertyValue>, StoreStatus> read(std::string_view key);
    bool contains(std::string_view key);
    StoreStatus write(std::string_view key, const PropertyValue& value);
    StoreStatus remove(std::string_view key);
    StoreStatus removeAll();
    std::vector<std::string> keys();
    StoreReport verify();
    StoreStatus reset();
    StoreStatus acceptRestored();
    // Without the lock; absent while nothing shows whether the store changes.
    std::optional<SecureDefaults::ChangeMark> changeMark() const;

    // Around a fork: closes the connection and keeps every thread out.
    void suspend();
    void resume() { m_mutex.unlock(); }

  private:
    struct Opened {
        Opened(const StoreSealer& key, std::unique_ptr<Database> file)
            : sealer(key), database(std::move(file)), ledger(sealer, *database) {}

        StoreSealer sealer;
        std::unique_ptr<Database> database;
        StoreLedger ledger;
        EntryCache cache;
    };

    template <class Operation>
    auto locked(Operation operation);
    template <class Operation>
    auto opened(std::string_view key, Operation operation);
    StoreStatus note(StoreStatus status, std::string_view key = {});

    const EntryCache::Entry* cached(std::string_view key) const;

    StoreStatus open();
    StoreStatus openUnderLock();
    StoreStatus createData(const StoreSealer& sealer, Database& database);
    StoreStatus check(const StoreSealer& sealer, Database& database);
    StoreStatus restate(const StoreSealer& sealer, Database& database);
    StoreStatus checkBucket(std::string_view tag);
    bool isOvertaken();
    bool dataBelongsTo(const RootKey& root);
    StoreStatus adoptKey(const RootKey& root);

    Outcome<std::optional<PropertyValue>, StoreStatus> find(std::string_view key);
    StoreStatus change(std::string_view key, std::string tag, std::optional<std::string> sealed);
    StoreStatus clear();
    StoreStatus commit(Database::Transaction& transaction, std::uint64_t sequence);
    StoreLedger::Content walk();

    const std::string m_domain;
    const StoreID m_id;
    const StoreFiles m_files;
    std::mutex m_mutex;
    std::optional<Opened> m_open;
    SequenceFile m_last;
    std::vector<StoreFault> m_faults;  // of the operation that is running
};

// Tells the damage handler and the diagnostics.
void reportFault(const StoreFault& fault);

}  // namespace torvel
