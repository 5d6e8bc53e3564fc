#include "TorvelPlatform/defaults/StoreLedger.h"

#include <algorithm>
#include <iterator>

namespace torvel {
namespace {

std::size_t bucketOf(std::string_view tag) { return static_cast<std::uint8_t>(tag.front()); }

// Less than the tags of a bucket, and no tag of an entry.
std::string startOf(std::size_t bucket) {
    return bucket < bucketCount ? std::string(1, static_cast<char>(bucket)) : std::string(17, '\xFF');
}

}  // namespace

Outcome<StoreSummary, StoreStatus> StoreLedger::summary() {
    const auto sealed = m_database.summary();
    if (!sealed) return sealed.error();
    return sealed.value() ? m_sealer.openSummary(*sealed.value()) : StoreStatus::damaged;
}

StoreStatus StoreLedger::put(const StoreSummary& summary) {
    m_written = summary;
    return m_database.putSummary(m_sealer.sealSummary(summary));
}

StoreLedger::Bucket StoreLedger::read(std::size_t number, bool opensEntries) {
    Bucket bucket;
    const auto visit = [&](std::string_view tag, std::string_view sealed) {
        m_sealer.add(bucket.found, tag, sealed);
        if (!opensEntries) return;
        auto entry = m_sealer.open(tag, sealed);
        if (entry)
            bucket.content.names.push_back(std::move(entry).value().key);
        else
            ++bucket.content.damaged;
    };
    bucket.status = m_database.forEach(startOf(number), startOf(number + 1), visit);
    return bucket;
}

// Of a bucket whose entries were opened.
StoreStatus StoreLedger::judge(const Bucket& bucket, const BucketSum& expected) {
    if (bucket.status != StoreStatus::ok) return bucket.status;
    if (bucket.found.count != expected.count || bucket.content.damaged > 0) return StoreStatus::damaged;
    return bucket.found == expected ? StoreStatus::ok : StoreStatus::rolledBack;
}

bool StoreLedger::isWhole(std::string_view tag) const { return m_isWhole[bucketOf(tag)]; }

StoreStatus StoreLedger::check(std::string_view tag) {
    const std::size_t number = bucketOf(tag);
    if (m_isWhole[number]) return StoreStatus::ok;
    const auto head = summary();
    if (!head) return head.error();
    const BucketSum& expected = head.value().buckets[number];
    const Bucket bucket = read(number, false);
    m_isWhole[number] = bucket.status == StoreStatus::ok && bucket.found == expected;
    return m_isWhole[number] ? StoreStatus::ok : judge(read(number, true), expected);
}

Outcome<std::uint64_t, StoreStatus> StoreLedger::make(const Change& change, const std::optional<Mark>& mark) {
    const auto& [tag, old, isOldIntact, sealed] = change;
    auto head = mark && mark == m_mark ? Outcome<StoreSummary, StoreStatus>(m_committed) : summary();
    if (!head) return head.error();
    const StoreStatus status = sealed ? m_database.put(tag, *sealed) : m_database.erase(tag);
    if (status != StoreStatus::ok) return status;

    const std::size_t number = bucketOf(tag);
    BucketSum& bucket = head.value().buckets[number];
    if (old) m_sealer.takeOut(bucket, tag, *old);
    if (sealed) m_sealer.add(bucket, tag, *sealed);
    // What a broken entry once added is not known: the sum starts over from what is there.
    if (old && !isOldIntact && !m_sealer.open(tag, *old)) bucket.sum = read(number, false).found.sum;

    ++head.value().sequence;
    const StoreStatus kept = put(head.value());
    return kept == StoreStatus::ok ? Outcome<std::uint64_t, StoreStatus>(head.value().sequence) : kept;
}

StoreLedger::Content StoreLedger::walk() {
    Content all;
    const auto head = summary();
    for (std::size_t number = 0; number < bucketCount; ++number) {
        Bucket bucket = read(number, true);
        const StoreStatus status = head ? judge(bucket, head.value().buckets[number]) : head.error();
        if (all.status == StoreStatus::ok || status == StoreStatus::rolledBack) all.status = status;
        all.damaged += bucket.content.damaged;
        std::move(bucket.content.names.begin(), bucket.content.names.end(), std::back_inserter(all.names));
    }
    return all;
}

}  // namespace torvel
