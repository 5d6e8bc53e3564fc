#include "TorvelPlatform/defaults/StoreEngine.h"

#include <algorithm>

namespace torvel {

StoreEngine::StoreEngine(std::string_view domain)
    : m_domain(domain), m_id(storeID(domain)), m_files(m_id), m_last(m_files.lastSequence()) {}

// Runs an operation under the lock, then tells what it noted.
template <class Operation>
auto StoreEngine::locked(Operation operation) {
    std::unique_lock lock(m_mutex);
    auto result = operation();
    const std::vector<StoreFault> faults = std::exchange(m_faults, {});
    lock.unlock();
    std::for_each(faults.begin(), faults.end(), reportFault);
    return result;
}

StoreStatus StoreEngine::note(StoreStatus status, std::string_view key) {
    if (status != StoreStatus::ok) {
        std::string description = "The encrypted store \"" + m_domain + "\": ";
        m_faults.push_back({status, m_domain, std::string(key), description.append(describe(status)) + "."});
    }
    return status;
}

bool StoreEngine::isKeyCreated() {
    const std::lock_guard lock(m_mutex);
    if (m_open) return true;
    const auto key = m_files.loadKey();
    return key || key.error() != StoreStatus::noKey || m_files.hasData();
}

StoreStatus StoreEngine::setPassword(std::string_view password) {
    return locked([&] {
        if (const StoreStatus made = m_files.makeDirectory(); made != StoreStatus::ok) return note(made);
        const Descriptor lock = m_files.lock();
        const RootKey root = deriveRootKey(password, m_id);
        const auto present = m_files.loadKey();
        if (present && present.value() != root) return note(StoreStatus::keyMismatch);
        if (!present && present.error() != StoreStatus::noKey) return note(present.error());
        if (!present) {
            if (const StoreStatus adopted = adoptKey(root); adopted != StoreStatus::ok) return note(adopted);
        }
        return note(openUnderLock());
    });
}

// Never a new key over old data.
StoreStatus StoreEngine::adoptKey(const RootKey& root) {
    if (m_files.hasData() && !dataBelongsTo(root)) return StoreStatus::keyMissing;
    return m_files.saveKey(root);
}

bool StoreEngine::dataBelongsTo(const RootKey& root) {
    auto database = Database::open(m_files.database());
    if (!database) return false;
    const auto summary = database.value()->summary();
    return summary && summary.value() && StoreSealer(root, m_id).isOwnSummary(*summary.value());
}

StoreStatus StoreEngine::open() {
    if (m_open) return StoreStatus::ok;
    const Descriptor lock = m_files.lock();
    return openUnderLock();
}

StoreStatus StoreEngine::openUnderLock() {
    if (m_open) return StoreStatus::ok;
    const auto root = m_files.loadKey();
    if (!root) {
        const bool isLost = root.error() == StoreStatus::noKey && m_files.hasData();
        return isLost ? StoreStatus::keyMissing : root.error();
    }
    const StoreSealer sealer(root.value(), m_id);
    if (!m_files.hasData() && sealer.openSequence(m_last.content())) return StoreStatus::rolledBack;
    if (const StoreStatus made = m_files.makeDirectory(); made != StoreStatus::ok) return made;
    auto database = Database::open(m_files.database());
    if (!database) return database.error();

    StoreStatus status = createData(sealer, *database.value());
    if (status == StoreStatus::ok) status = check(sealer, *database.value());
    if (status != StoreStatus::ok && status != StoreStatus::damaged) return status;
    note(status);
    m_open.emplace(sealer, std::move(database).value());
    m_last.attach();
    return StoreStatus::ok;
}

// Makes the table of entries where there is nothing yet.
StoreStatus StoreEngine::createData(const StoreSealer& sealer, Database& database) {
    const auto empty = database.isEmpty();
    if (!empty) return empty.error();
    if (!empty.value()) return StoreStatus::ok;
    if (sealer.openSequence(m_last.content())) return StoreStatus::rolledBack;
    const StoreStatus created = database.create(sealer.sealSummary({}));
    if (created == StoreStatus::ok) m_last.set(sealer.sealSequence(0));
    return created;
}

// Whether the newest data is there: older data is refused, as any value could be an old one. damaged where it
// cannot be told any longer.
StoreStatus StoreEngine::check(const StoreSealer& sealer, Database& database) {
    // Read before the data, which another process may be moving on.
    const std::string last = m_last.content();
    const auto lastSequence = sealer.openSequence(last);
    const auto summary = StoreLedger(sealer, database).summary();
    if (!summary) return summary.error();
    if (lastSequence.value_or(0) > summary.value().sequence) return StoreStatus::rolledBack;
    return lastSequence && last == sealer.sealSequence(*lastSequence) ? StoreStatus::ok
                                                                      : restate(sealer, database);
}

// Where the sequence number is gone, or a write was announced that failed or whose process was killed: what
// the log holds of it may never have reached the disk, and is relied on from here.
StoreStatus StoreEngine::restate(const StoreSealer& sealer, Database& database) {
    const Database::Transaction transaction(database, Database::Transaction::writing);
    if (transaction.status() != StoreStatus::ok) return transaction.status();
    const auto summary = StoreLedger(sealer, database).summary();
    if (!summary) return summary.error();
    const StoreStatus status = database.rewriteLog();
    if (status == StoreStatus::ok) m_last.set(sealer.sealSequence(summary.value().sequence));
    return status;
}

// Whether another process has moved the store aside, which it does under the lock that is waited for here.
bool StoreEngine::isOvertaken() {
    const Descriptor lock = m_files.lock();
    return m_open && m_open->database->hasMoved();
}

// Runs an operation on the open store; again on the new one when the store had been moved aside. A failed
// write leaves the store open: SQLite then writes anew over what was not synced, where one who opened it
// afresh would take that for written and build on it.
template <class Operation>
auto StoreEngine::opened(std::string_view key, Operation operation) {
    using Result = decltype(operation());
    return locked([&]() -> Result {
        const auto failed = [](const Result& result) {
            if constexpr (std::is_same_v<Result, StoreStatus>)
                return result;
            else
                return result ? StoreStatus::ok : result.error();
        };
        for (bool isFirst = true;; isFirst = false) {
            if (const StoreStatus status = open(); status != StoreStatus::ok) return note(status, key);
            Result result = operation();
            const StoreStatus status = failed(result);
            const bool isRetried = status != StoreStatus::ok && isFirst && isOvertaken();
            if (!isRetried) {
                note(status, key);
                return result;
            }
            m_open.reset();
        }
    });
}

StoreStatus StoreEngine::status() {
    return opened({}, [&] {
        const auto summary = m_open->ledger.summary();
        return summary ? StoreStatus::ok : summary.error();
    });
}

std::optional<SecureDefaults::ChangeMark> StoreEngine::changeMark() const {
    const SequenceFile::Page* const page = m_last.page();
    if (page == nullptr || __atomic_load_n(&page->isRetired, __ATOMIC_ACQUIRE) != 0) return std::nullopt;
    const std::uint64_t sequence = __atomic_load_n(&page->sequence, __ATOMIC_ACQUIRE);
    if (__atomic_load_n(&page->announced, __ATOMIC_ACQUIRE) != sequence) return std::nullopt;
    return SecureDefaults::ChangeMark{page, sequence};
}

const EntryCache::Entry* StoreEngine::cached(std::string_view key) const {
    const auto mark = m_open ? changeMark() : std::nullopt;
    return mark ? m_open->cache.find(*mark, key) : nullptr;
}

Outcome<std::optional<PropertyValue>, StoreStatus> StoreEngine::read(std::string_view key) {
    {
        const std::lock_guard lock(m_mutex);
        const EntryCache::Entry* const kept = cached(key);
        if (kept != nullptr) {
            if (auto entry = m_open->sealer.open(kept->tag, kept->sealed))
                return std::optional(std::move(entry).value().value);
        }
    }
    if (!isKeyCreated()) return std::optional<PropertyValue>();
    return opened(key, [&] { return find(key); });
}

bool StoreEngine::contains(std::string_view key) {
    {
        const std::lock_guard lock(m_mutex);
        if (cached(key) != nullptr) return true;
    }
    const auto outcome = read(key);
    return outcome && outcome.value();
}

StoreStatus StoreEngine::checkBucket(std::string_view tag) {
    if (m_open->ledger.isWhole(tag)) return StoreStatus::ok;
    const Database::Transaction snapshot(*m_open->database, Database::Transaction::reading);
    return snapshot.status() == StoreStatus::ok ? m_open->ledger.check(tag) : snapshot.status();
}

Outcome<std::optional<PropertyValue>, StoreStatus> StoreEngine::find(std::string_view key) {
    const auto mark = changeMark();  // before the reading: what it does not show is read once more
    auto& [sealer, database, ledger, cache] = *m_open;
    if (!mark) {
        if (database->hasMoved()) return StoreStatus::rolledBack;  // and try again with the new file
        m_last.attach();                                           // where another has been made since
    }
    std::string tag = sealer.tag(key);
    auto sealed = database->find(tag);
    if (!sealed) return sealed.error();
    const StoreStatus bucket = checkBucket(tag);
    if (bucket != StoreStatus::ok && (bucket != StoreStatus::damaged || !sealed.value())) return bucket;
    if (!sealed.value()) return std::optional<PropertyValue>();
    auto entry = sealer.open(tag, *sealed.value());
    if (!entry) return entry.error();
    if (entry.value().key != key) return StoreStatus::damaged;
    if (mark) cache.keep(*mark, key, {std::move(tag), *std::move(sealed.value())});
    return std::optional(std::move(entry).value().value);
}

StoreStatus StoreEngine::write(std::string_view key, const PropertyValue& value) {
    return opened(key, [&] {
        std::string tag = m_open->sealer.tag(key);
        auto sealed = m_open->sealer.seal(tag, key, value);
        return sealed ? change(key, std::move(tag), std::move(sealed)) : StoreStatus::invalidValue;
    });
}

StoreStatus StoreEngine::remove(std::string_view key) {
    return opened(key, [&] { return change(key, m_open->sealer.tag(key), std::nullopt); });
}

// Puts or erases an entry and brings the summary along.
StoreStatus StoreEngine::change(std::string_view key, std::string tag, std::optional<std::string> sealed) {
    auto& [sealer, database, ledger, cache] = *m_open;
    Database::Transaction transaction(*database, Database::Transaction::writing);
    if (transaction.status() != StoreStatus::ok) return transaction.status();
    if (database->hasMoved()) return StoreStatus::rolledBack;  // and try again with the new file
    m_last.attach();  // to the file that is there now: a removed one is not told of other processes' writes
    const auto mark = changeMark();
    const EntryCache::Entry* const kept = mark ? cache.find(*mark, key) : nullptr;
    const auto old = kept != nullptr ? Database::Found(kept->sealed) : database->find(tag);
    if (!old) return old.error();
    if (!old.value() && !sealed) return StoreStatus::ok;
    const StoreStatus bucket = ledger.check(tag);
    if (bucket != StoreStatus::ok && bucket != StoreStatus::damaged) return bucket;
    const auto sequence = ledger.make({tag, old.value(), kept != nullptr, sealed}, mark);
    if (!sequence) return sequence.error();
    const StoreStatus status = commit(transaction, sequence.value());
    if (status != StoreStatus::ok) return status;
    const auto next = changeMark();
    if (!next || next->sequence != sequence.value()) return status;  // another process wrote since
    ledger.committed(*next);
    if (mark) cache.moveOn(*mark, *next, key, std::move(tag), std::move(sealed));
    return status;
}

// Announced before, told after: in between no reader relies on the number.
StoreStatus StoreEngine::commit(Database::Transaction& transaction, std::uint64_t sequence) {
    StoreStatus status = m_last.announce(sequence);
    if (status == StoreStatus::ok) status = transaction.commit();
    if (status == StoreStatus::ok) m_last.tell(m_open->sealer.sealSequence(sequence));
    return status;
}

StoreStatus StoreEngine::removeAll() {
    if (!isKeyCreated()) return StoreStatus::ok;
    return opened({}, [&] { return clear(); });
}

StoreStatus StoreEngine::clear() {
    auto& [sealer, database, ledger, cache] = *m_open;
    Database::Transaction transaction(*database, Database::Transaction::writing);
    if (transaction.status() != StoreStatus::ok) return transaction.status();
    if (database->hasMoved()) return StoreStatus::rolledBack;
    const auto summary = ledger.summary();
    const auto last = sealer.openSequence(m_last.content());
    StoreSummary cleared;
    cleared.sequence = (summary ? summary.value().sequence : last.value_or(0)) + 1;
    StoreStatus status = database->eraseAll();
    if (status == StoreStatus::ok) status = ledger.put(cleared);
    return status == StoreStatus::ok ? commit(transaction, cleared.sequence) : status;
}

// All of one moment.
StoreLedger::Content StoreEngine::walk() {
    const Database::Transaction snapshot(*m_open->database, Database::Transaction::reading);
    StoreLedger::Content none;
    none.status = snapshot.status();
    return none.status == StoreStatus::ok ? m_open->ledger.walk() : none;
}

std::vector<std::string> StoreEngine::keys() {
    if (!isKeyCreated()) return {};
    std::vector<std::string> names;
    opened({}, [&] {
        StoreLedger::Content content = walk();
        names = std::move(content.names);
        return content.status;
    });
    std::sort(names.begin(), names.end());
    return names;
}

StoreReport StoreEngine::verify() {
    return locked([&] {
        StoreReport report;
        m_open.reset();  // to have it checked anew
        report.status = note(open());
        if (report.status != StoreStatus::ok) {
            report.findings.emplace_back(describe(report.status));
            return report;
        }
        const StoreLedger::Content content = walk();
        report.status = content.status;
        report.readable = content.names.size();
        report.damaged = content.damaged;
        if (content.damaged > 0)
            report.findings.push_back(std::to_string(content.damaged) + " entries cannot be read");
        if (content.status != StoreStatus::ok)
            report.findings.emplace_back("the entries are not all that were written");
        const std::string structure = m_open->database->integrity();
        if (structure != "ok") report.findings.push_back(structure);
        if (report.status == StoreStatus::ok && structure != "ok") report.status = StoreStatus::damaged;
        note(report.status);
        return report;
    });
}

StoreStatus StoreEngine::reset() {
    return locked([&] {
        const Descriptor lock = m_files.lock();
        if (m_open) {
            m_open->database->retire();
        } else if (m_files.hasData()) {
            if (const auto database = Database::open(m_files.database())) database.value()->retire();
        }
        m_open.reset();
        m_last.retire();
        return note(m_files.moveAside());
    });
}

StoreStatus StoreEngine::acceptRestored() {
    return locked([&] {
        const Descriptor lock = m_files.lock();
        m_open.reset();
        StoreStatus status = m_last.forget();
        if (status == StoreStatus::ok) status = openUnderLock();
        if (status != StoreStatus::ok) return note(status);
        return walk().status;
    });
}

void StoreEngine::suspend() {
    m_mutex.lock();
    m_open.reset();
}

}  // namespace torvel
