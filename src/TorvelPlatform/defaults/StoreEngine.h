#pragma once  // internal

#include "TorvelPlatform/defaults/Database.h"
#include "TorvelPlatform/defaults/SealedEntry.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "TorvelPlatform/defaults/StoreFiles.h"

#include <atomic>
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
    StoreStatus write(std::string_view key, const PropertyValue& value);
    StoreStatus remove(std::string_view key);
    StoreStatus removeAll();
    std::vector<std::string> keys();
    StoreReport verify();
    StoreStatus reset();
    StoreStatus acceptRestored();
    // Without the lock; nullptr while there is nothing to see.
    const SequencePage* sequencePage() const { return m_sequence.load(std::memory_order_acquire); }

    // Around a fork: closes the connection and keeps every thread out.
    void suspend();
    void resume() { m_mutex.unlock(); }

  private:
    struct Opened {
        StoreSealer sealer;
        std::unique_ptr<Database> database;
        bool isDamaged;  // an entry that is not found may have been there
    };
    struct Walk;

    template <class Operation>
    auto locked(Operation operation);
    template <class Operation>
    auto opened(std::string_view key, Operation operation);
    StoreStatus note(StoreStatus status, std::string_view key = {});

    StoreStatus open();
    StoreStatus openUnderLock();
    StoreStatus createData(const StoreSealer& sealer, Database& database);
    StoreStatus check(const StoreSealer& sealer, Database& database, bool& isDamaged);
    Walk walk(const StoreSealer& sealer, Database& database, bool opensEntries);
    bool isOvertaken();
    bool dataBelongsTo(const RootKey& root);
    StoreStatus adoptKey(const RootKey& root);

    Outcome<std::optional<PropertyValue>, StoreStatus> find(std::string_view key);
    StoreStatus change(std::string_view key, const std::optional<std::string>& sealed);
    void replace(StoreSummary& summary, std::string_view tag, const std::optional<std::string>& old,
                 const std::optional<std::string>& sealed) const;
    bool mend(StoreSummary& summary);
    StoreStatus clear();
    StoreStatus commit(Database::Transaction& transaction, StoreSummary summary);

    const std::string m_domain;
    const StoreID m_id;
    const StoreFiles m_files;
    std::mutex m_mutex;
    std::optional<Opened> m_open;
    std::atomic<const SequencePage*> m_sequence{nullptr};
    std::vector<StoreFault> m_faults;  // of the operation that is running
};

// Tells the damage handler and the diagnostics.
void reportFault(const StoreFault& fault);

}  // namespace torvel
