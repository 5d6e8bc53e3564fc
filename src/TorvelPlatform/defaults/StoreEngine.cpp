#include "TorvelPlatform/defaults/StoreEngine.h"

#include <algorithm>

namespace torvel {

// What a walk through all entries adds up to.
struct StoreEngine::Walk {
    StoreStatus status = StoreStatus::ok;
    StoreSummary found;
    std::size_t damaged = 0;  // counted, and the names collected, where entries are opened
    std::vector<std::string> names;
};

StoreEngine::StoreEngine(std::string_view domain) : m_domain(domain), m_id(storeID(domain)), m_files(m_id) {}

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
    const auto summary = database.value()->find({});
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
    if (!m_files.hasData() && sealer.openSequence(m_files.lastSequence())) return StoreStatus::rolledBack;
    if (const StoreStatus made = m_files.makeDirectory(); made != StoreStatus::ok) return made;
    auto database = Database::open(m_files.database());
    if (!database) return database.error();

    bool isDamaged = false;
    StoreStatus status = createData(sealer, *database.value());
    if (status == StoreStatus::ok) status = check(sealer, *database.value(), isDamaged);
    if (status != StoreStatus::ok) return status;
    if (isDamaged) note(StoreStatus::damaged);
    m_open.emplace(Opened{sealer, std::move(database).value(), isDamaged});
    m_sequence = m_files.mapLastSequence();
    return StoreStatus::ok;
}

// Makes the table of entries where there is nothing yet.
StoreStatus StoreEngine::createData(const StoreSealer& sealer, Database& database) {
    const auto empty = database.isEmpty();
    if (!empty) return empty.error();
    if (!empty.value()) return StoreStatus::ok;
    if (sealer.openSequence(m_files.lastSequence())) return StoreStatus::rolledBack;
    const StoreStatus created = database.create(sealer.sealSummary({}));
    if (created == StoreStatus::ok) m_files.setLastSequence(sealer.sealSequence(0));
    return created;
}

// Whether all that was written is there. What is missing or broken makes the store damaged; older data in the
// place of newer refuses it, as any value could be an old one.
StoreStatus StoreEngine::check(const StoreSealer& sealer, Database& database, bool& isDamaged) {
    // Read before the data, which another process may be moving on.
    const auto lastSequence = sealer.openSequence(m_files.lastSequence());
    const Database::Transaction snapshot(database, Database::Transaction::reading);
    const auto sealed = database.find({});
    if (!sealed) return sealed.error();
    const auto summary = sealer.openSummary(sealed.value().value_or(""));
    isDamaged = !summary;
    if (!summary) {
        const bool isUnreadable = sealed.value() && summary.error() != StoreStatus::damaged;
        return isUnreadable ? summary.error() : StoreStatus::ok;
    }
    if (!lastSequence) m_files.setLastSequence(sealer.sealSequence(summary.value().sequence));
    if (lastSequence.value_or(0) > summary.value().sequence) return StoreStatus::rolledBack;

    Walk all = walk(sealer, database, false);
    all.found.sequence = summary.value().sequence;
    isDamaged = all.status != StoreStatus::ok || all.found != summary.value();
    if (!isDamaged || all.found.count != summary.value().count) return StoreStatus::ok;
    return walk(sealer, database, true).damaged > 0 ? StoreStatus::ok : StoreStatus::rolledBack;
}

StoreEngine::Walk StoreEngine::walk(const StoreSealer& sealer, Database& database, bool opensEntries) {
    Walk all;
    all.status = database.forEach([&](std::string_view tag, std::string_view sealed) {
        ++all.found.count;
        sealer.toggle(all.found, tag, sealed);
        if (!opensEntries) return;
        auto entry = sealer.open(tag, sealed);
        if (entry)
            all.names.push_back(std::move(entry).value().key);
        else
            ++all.damaged;
    });
    return all;
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
    return locked([&] {
        if (const StoreStatus status = open(); status != StoreStatus::ok) return note(status);
        return m_open->isDamaged ? StoreStatus::damaged : StoreStatus::ok;
    });
}

Outcome<std::optional<PropertyValue>, StoreStatus> StoreEngine::read(std::string_view key) {
    if (!isKeyCreated()) return std::optional<PropertyValue>();
    return opened(key, [&] { return find(key); });
}

Outcome<std::optional<PropertyValue>, StoreStatus> StoreEngine::find(std::string_view key) {
    const std::string tag = m_open->sealer.tag(key);
    const auto sealed = m_open->database->find(tag);
    if (!sealed) return sealed.error();
    if (!sealed.value()) {
        if (m_open->isDamaged) return StoreStatus::damaged;
        return std::optional<PropertyValue>();
    }
    auto entry = m_open->sealer.open(tag, *sealed.value());
    if (!entry) return entry.error();
    if (entry.value().key != key) return StoreStatus::damaged;
    return std::optional(std::move(entry).value().value);
}

StoreStatus StoreEngine::write(std::string_view key, const PropertyValue& value) {
    return opened(key, [&] {
        const auto sealed = m_open->sealer.seal(key, value);
        return sealed ? change(key, sealed) : StoreStatus::invalidValue;
    });
}

StoreStatus StoreEngine::remove(std::string_view key) {
    return opened(key, [&] { return change(key, std::nullopt); });
}

// Puts or erases an entry and brings the summary along.
StoreStatus StoreEngine::change(std::string_view key, const std::optional<std::string>& sealed) {
    auto& [sealer, database, isDamaged] = *m_open;
    const std::string tag = sealer.tag(key);
    Database::Transaction transaction(*database, Database::Transaction::writing);
    if (transaction.status() != StoreStatus::ok) return transaction.status();
    if (database->hasMoved()) return StoreStatus::rolledBack;  // and try again with the new file
    const auto head = database->find({});
    const auto old = database->find(tag);
    if (!head || !old) return head ? old.error() : head.error();
    auto summary = sealer.openSummary(head.value().value_or(""));
    if (!summary) return summary.error();
    if (!old.value() && !sealed) return StoreStatus::ok;

    replace(summary.value(), tag, old.value(), sealed);
    const StoreStatus changed = sealed ? database->put(tag, *sealed) : database->erase(tag);
    if (changed != StoreStatus::ok) return changed;
    const bool endsDamage = old.value() && !sealer.open(tag, *old.value());
    const bool staysDamaged = endsDamage ? !mend(summary.value()) : isDamaged;
    const StoreStatus status = commit(transaction, summary.value());
    if (status == StoreStatus::ok) isDamaged = staysDamaged;
    return status;
}

// What a broken entry once added to the sum is not known: the sum starts over from what is there. Whether the
// count agrees.
bool StoreEngine::mend(StoreSummary& summary) {
    const StoreSummary found = walk(m_open->sealer, *m_open->database, false).found;
    summary.sum = found.sum;
    return found.count == summary.count;
}

// Has a summary count one entry in the place of another; either may be absent.
void StoreEngine::replace(StoreSummary& summary, std::string_view tag, const std::optional<std::string>& old,
                          const std::optional<std::string>& sealed) const {
    if (old) m_open->sealer.toggle(summary, tag, *old);
    if (sealed) m_open->sealer.toggle(summary, tag, *sealed);
    summary.count = summary.count + (sealed ? 1 : 0) - (old ? 1 : 0);
}

StoreStatus StoreEngine::commit(Database::Transaction& transaction, StoreSummary summary) {
    ++summary.sequence;
    StoreStatus status = m_open->database->put({}, m_open->sealer.sealSummary(summary));
    if (status == StoreStatus::ok) status = transaction.commit();
    if (status == StoreStatus::ok) m_files.setLastSequence(m_open->sealer.sealSequence(summary.sequence));
    return status;
}

StoreStatus StoreEngine::removeAll() {
    if (!isKeyCreated()) return StoreStatus::ok;
    return opened({}, [&] { return clear(); });
}

StoreStatus StoreEngine::clear() {
    auto& [sealer, database, isDamaged] = *m_open;
    Database::Transaction transaction(*database, Database::Transaction::writing);
    if (transaction.status() != StoreStatus::ok) return transaction.status();
    if (database->hasMoved()) return StoreStatus::rolledBack;
    const auto head = database->find({});
    const auto summary = sealer.openSummary(head && head.value() ? *head.value() : std::string());
    const auto last = sealer.openSequence(m_files.lastSequence());
    StoreSummary cleared;
    cleared.sequence = summary ? summary.value().sequence : last.value_or(0);
    StoreStatus status = database->eraseAll();
    if (status == StoreStatus::ok) status = commit(transaction, cleared);
    if (status == StoreStatus::ok) isDamaged = false;
    return status;
}

std::vector<std::string> StoreEngine::keys() {
    if (!isKeyCreated()) return {};
    std::vector<std::string> names;
    opened({}, [&] {
        Walk all = walk(m_open->sealer, *m_open->database, true);
        names = std::move(all.names);
        return all.damaged > 0 ? StoreStatus::damaged : all.status;
    });
    std::sort(names.begin(), names.end());
    return names;
}

StoreReport StoreEngine::verify() {
    return locked([&] {
        StoreReport report;
        m_open.reset();  // to have it checked anew
        report.status = open();
        if (report.status != StoreStatus::ok) {
            report.findings.emplace_back(describe(note(report.status)));
            return report;
        }
        const Walk all = walk(m_open->sealer, *m_open->database, true);
        report.readable = all.names.size();
        report.damaged = all.damaged;
        if (all.damaged > 0)
            report.findings.push_back(std::to_string(all.damaged) + " entries cannot be read");
        if (m_open->isDamaged) report.findings.emplace_back("the entries are not all that were written");
        const std::string structure = m_open->database->integrity();
        if (structure != "ok") report.findings.push_back(structure);
        if (!report.findings.empty()) report.status = StoreStatus::damaged;
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
        m_sequence = nullptr;
        m_files.retireLastSequence();
        return note(m_files.moveAside());
    });
}

StoreStatus StoreEngine::acceptRestored() {
    return locked([&] {
        const Descriptor lock = m_files.lock();
        m_open.reset();
        m_sequence = nullptr;
        StoreStatus status = m_files.forgetLastSequence();
        if (status == StoreStatus::ok) status = openUnderLock();
        if (status != StoreStatus::ok) return note(status);
        return m_open->isDamaged ? StoreStatus::damaged : StoreStatus::ok;
    });
}

void StoreEngine::suspend() {
    m_mutex.lock();
    m_open.reset();
}

}  // namespace torvel
