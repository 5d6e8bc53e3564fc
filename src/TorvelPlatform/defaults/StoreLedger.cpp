#include "TorvelPlatform/defaults/StoreLedger.h"

#include <algorithm>
#include <iterator>

namespace torvel {
namespace {

std::size_t bucketOf(std::string_view tag) { return static_cast<std::uint8_t>(tag.front()); }

// Less than the tags of a bucket, and no tag of an entry. The tag of a page is that of its first bucket.
std::string startOf(std::size_t bucket) {
    return bucket < bucketCount ? std::string(1, static_cast<char>(bucket)) : std::string(17, '\xFF');
}

std::string tagOfPage(std::size_t number) { return startOf(number * bucketsAPage); }

}  // namespace

Outcome<StoreSummary, StoreStatus> StoreLedger::summary() {
    const auto sealed = m_database.find({});
    return sealed ? m_sealer.openSummary(sealed.value().value_or("")) : sealed.error();
}

Outcome<SummaryPage, StoreStatus> StoreLedger::page(const StoreSummary& summary, std::size_t number) {
    if (summary.pages[number] == 0) return SummaryPage();
    const auto sealed = m_database.find(tagOfPage(number));
    if (!sealed) return sealed.error();
    auto page = m_sealer.openPage(number, sealed.value().value_or(""));
    if (page && page.value().sequence != summary.pages[number]) return StoreStatus::rolledBack;
    return page;
}

StoreLedger::Bucket StoreLedger::read(std::size_t number, bool opensEntries) {
    Bucket bucket;
    const auto visit = [&](std::string_view tag, std::string_view sealed) {
        ++bucket.found.count;
        m_sealer.toggle(bucket.found, tag, sealed);
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
    if (bucket.status != StoreStatus::ok || bucket.found == expected) return bucket.status;
    const bool isMissed = bucket.found.count != expected.count || bucket.content.damaged > 0;
    return isMissed ? StoreStatus::damaged : StoreStatus::rolledBack;
}

bool StoreLedger::isWhole(std::string_view tag) const { return m_isWhole[bucketOf(tag)]; }

StoreStatus StoreLedger::check(std::string_view tag) {
    const std::size_t number = bucketOf(tag);
    if (m_isWhole[number]) return StoreStatus::ok;
    const auto head = summary();
    if (!head) return head.error();
    const auto kept = page(head.value(), number / bucketsAPage);
    if (!kept) return kept.error();
    const BucketSum& expected = kept.value().buckets[number % bucketsAPage];
    const Bucket bucket = read(number, false);
    m_isWhole[number] = bucket.status == StoreStatus::ok && bucket.found == expected;
    return m_isWhole[number] ? StoreStatus::ok : judge(read(number, true), expected);
}

Outcome<std::uint64_t, StoreStatus> StoreLedger::replace(std::string_view tag,
                                                         const std::optional<std::string>& old,
                                                         const std::optional<std::string>& sealed) {
    const std::size_t number = bucketOf(tag);
    auto head = summary();
    if (!head) return head.error();
    auto kept = page(head.value(), number / bucketsAPage);
    if (!kept) return kept.error();
    StoreStatus status = sealed ? m_database.put(tag, *sealed) : m_database.erase(tag);
    if (status != StoreStatus::ok) return status;

    BucketSum& bucket = kept.value().buckets[number % bucketsAPage];
    if (old) m_sealer.toggle(bucket, tag, *old);
    if (sealed) m_sealer.toggle(bucket, tag, *sealed);
    bucket.count = bucket.count + (sealed ? 1 : 0) - (old ? 1 : 0);
    // What a broken entry once added is not known: the sum starts over from what is there.
    if (old && !m_sealer.open(tag, *old)) bucket.sum = read(number, false).found.sum;

    const std::uint64_t sequence = ++head.value().sequence;
    kept.value().sequence = head.value().pages[number / bucketsAPage] = sequence;
    status = m_database.put(tagOfPage(number / bucketsAPage),
                            m_sealer.sealPage(number / bucketsAPage, kept.value()));
    if (status == StoreStatus::ok) status = m_database.put({}, m_sealer.sealSummary(head.value()));
    return status == StoreStatus::ok ? Outcome<std::uint64_t, StoreStatus>(sequence) : status;
}

StoreLedger::Content StoreLedger::walk() {
    Content all;
    const auto head = summary();
    for (std::size_t number = 0; number < bucketCount; ++number) {
        const auto kept = head ? page(head.value(), number / bucketsAPage) : head.error();
        Bucket bucket = read(number, true);
        const StoreStatus status =
            kept ? judge(bucket, kept.value().buckets[number % bucketsAPage]) : kept.error();
        if (all.status == StoreStatus::ok || status == StoreStatus::rolledBack) all.status = status;
        all.damaged += bucket.content.damaged;
        std::move(bucket.content.names.begin(), bucket.content.names.end(), std::back_inserter(all.names));
    }
    return all;
}

}  // namespace torvel
