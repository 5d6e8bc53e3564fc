#pragma once  // internal

#include "TorvelPlatform/defaults/PropertyValue.h"
#include "TorvelPlatform/defaults/StoreKey.h"
#include "TorvelPlatform/defaults/StoreStatus.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <array>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// What the entries of one bucket must add up to. The first byte of a tag is the number of its bucket. As
// small as this, the sums of all buckets fit one page of the database.
struct BucketSum {
    std::array<std::uint8_t, 2> count{};  // of entries, modulo 65,536
    std::array<std::uint8_t, 5> sum{};    // exclusive or of the entries' digests

    bool operator==(const BucketSum&) const = default;
};
constexpr std::size_t bucketCount = 256;

// What a store holds, kept sealed beside its entries and changed with every one of them.
struct StoreSummary {
    std::uint64_t sequence = 0;  // of the last write
    std::array<BucketSum, bucketCount> buckets{};
};

struct OpenedEntry {
    std::string key;
    PropertyValue value;
};

// Seals the entries of one store by XChaCha20-Poly1305 under random nonces. Sealed bytes are: the format's
// version, the nonce, cipher text, tag. The associated data binds them to the version, to what they are, to
// the store and to the tag that an entry lies under; the entry's own name and the kind of its value are
// inside.
class StoreSealer {
  public:
    StoreSealer(const RootKey& root, const StoreID& store);

    // The keyed hash (BLAKE2b, 16 bytes) that an entry lies under.
    std::string tag(std::string_view key) const;
    // What is to lie under the key's tag; absent when the value cannot be encoded.
    std::optional<std::string> seal(std::string_view tag, std::string_view key,
                                    const PropertyValue& value) const;
    // What lies under a tag: damaged, or newerFormat.
    Outcome<OpenedEntry, StoreStatus> open(std::string_view tag, std::string_view sealed) const;

    std::string sealSummary(const StoreSummary& summary) const;
    Outcome<StoreSummary, StoreStatus> openSummary(std::string_view sealed) const;
    // Whether a sealed summary names this key as its own, readable or not.
    bool isOwnSummary(std::string_view sealed) const;

    // Adds an entry to its bucket, or takes it out again.
    void add(BucketSum& bucket, std::string_view tag, std::string_view sealed) const;
    void takeOut(BucketSum& bucket, std::string_view tag, std::string_view sealed) const;

    // The last sequence number for the file beside the key: with a keyed check, and once more as announced.
    std::string sealSequence(std::uint64_t sequence) const;
    std::optional<std::uint64_t> openSequence(std::string_view sealed) const;

  private:
    void toggle(BucketSum& bucket, std::string_view tag, std::string_view sealed) const;
    std::string sealBytes(char what, std::string_view tag, std::string_view plain) const;
    Outcome<std::string, StoreStatus> openBytes(char what, std::string_view tag,
                                                std::string_view sealed) const;

    StoreID m_store;
    // In locked memory that stays out of core dumps.
    struct Keys {
        std::array<std::uint8_t, 32> contents, names;
        std::array<std::uint8_t, 16> digests;
    };
    std::shared_ptr<Keys> m_keys;
    std::array<std::uint8_t, 16> m_keyID;  // public, by which data tells its key
};

}  // namespace torvel
