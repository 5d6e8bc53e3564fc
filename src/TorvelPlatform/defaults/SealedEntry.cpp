#include "TorvelPlatform/defaults/SealedEntry.h"

#include "TorvelPlatform/defaults/PropertyCoding.h"

#include <algorithm>
#include <cstring>
#include <new>

#include <sodium.h>

namespace torvel {
namespace {

constexpr char formatVersion = 1;
constexpr char entryContent = 'e', summaryContent = 's';
constexpr std::size_t nonceSize = crypto_aead_xchacha20poly1305_ietf_NPUBBYTES;
constexpr std::size_t authenticatorSize = crypto_aead_xchacha20poly1305_ietf_ABYTES;

const std::uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}
std::uint8_t* bytesOf(std::string& text) { return reinterpret_cast<std::uint8_t*>(text.data()); }

std::string associatedData(char what, const StoreID& store, std::string_view tag) {
    std::string data{formatVersion, what};
    data.append(reinterpret_cast<const char*>(store.data()), store.size());
    return data.append(tag);
}

template <std::size_t Size>
void deriveKey(std::array<std::uint8_t, Size>& key, std::uint64_t number, const RootKey& root) {
    crypto_kdf_derive_from_key(key.data(), key.size(), number, "storekey", root.data());
}

using Digest = std::array<std::uint8_t, crypto_shorthash_siphashx24_BYTES>;

Digest digestOf(std::string_view bytes, const std::array<std::uint8_t, 16>& key) {
    Digest digest;
    crypto_shorthash_siphashx24(digest.data(), bytesOf(bytes), bytes.size(), key.data());
    return digest;
}

// Written as it lies in memory.
template <class Content>
std::string_view imageOf(const Content& content) {
    static_assert(std::has_unique_object_representations_v<Content>);
    return {reinterpret_cast<const char*>(&content), sizeof content};
}

template <class Content>
Outcome<Content, StoreStatus> fromImage(std::string_view image) {
    Content content;
    if (image.size() != sizeof content) return StoreStatus::damaged;
    std::memcpy(&content, image.data(), sizeof content);
    return content;
}

}  // namespace

StoreSealer::StoreSealer(const RootKey& root, const StoreID& store) : m_store(store) {
    if (sodium_init() < 0) throw std::bad_alloc();  // has to come before its first memory
    m_keys.reset(static_cast<Keys*>(sodium_malloc(sizeof(Keys))), sodium_free);
    if (!m_keys) throw std::bad_alloc();
    deriveKey(m_keys->contents, 1, root);
    deriveKey(m_keys->names, 2, root);
    deriveKey(m_keys->digests, 3, root);
    deriveKey(m_keyID, 4, root);
}

std::string StoreSealer::tag(std::string_view key) const {
    std::string tag(16, '\0');
    crypto_generichash(bytesOf(tag), tag.size(), bytesOf(key), key.size(), m_keys->names.data(),
                       m_keys->names.size());
    return tag;
}

std::string StoreSealer::sealBytes(char what, std::string_view tag, std::string_view plain) const {
    std::string sealed(1 + nonceSize + plain.size() + authenticatorSize, formatVersion);
    std::uint8_t* const nonce = bytesOf(sealed) + 1;
    randombytes_buf(nonce, nonceSize);
    const std::string bound = associatedData(what, m_store, tag);
    crypto_aead_xchacha20poly1305_ietf_encrypt(nonce + nonceSize, nullptr, bytesOf(plain), plain.size(),
                                               bytesOf(bound), bound.size(), nullptr, nonce,
                                               m_keys->contents.data());
    return sealed;
}

Outcome<std::string, StoreStatus> StoreSealer::openBytes(char what, std::string_view tag,
                                                         std::string_view sealed) const {
    if (!sealed.empty() && sealed.front() > formatVersion) return StoreStatus::newerFormat;
    if (sealed.size() < 1 + nonceSize + authenticatorSize || sealed.front() != formatVersion)
        return StoreStatus::damaged;
    const std::string_view cipherText = sealed.substr(1 + nonceSize);
    std::string plain(cipherText.size() - authenticatorSize, '\0');
    const std::string bound = associatedData(what, m_store, tag);
    if (crypto_aead_xchacha20poly1305_ietf_decrypt(bytesOf(plain), nullptr, nullptr, bytesOf(cipherText),
                                                   cipherText.size(), bytesOf(bound), bound.size(),
                                                   bytesOf(sealed) + 1, m_keys->contents.data()) != 0)
        return StoreStatus::damaged;
    return plain;
}

std::optional<std::string> StoreSealer::seal(std::string_view tag, std::string_view key,
                                             const PropertyValue& value) const {
    std::optional<std::string> encoded = encodeProperty(value);
    if (!encoded) return std::nullopt;
    std::string plain;
    plain.reserve(key.size() + encoded->size() + 8);
    appendLength(plain, key.size());
    plain.append(key).append(*encoded);
    std::string sealed = sealBytes(entryContent, tag, plain);
    sodium_memzero(plain.data(), plain.size());
    sodium_memzero(encoded->data(), encoded->size());
    return sealed;
}

Outcome<OpenedEntry, StoreStatus> StoreSealer::open(std::string_view tag, std::string_view sealed) const {
    auto plain = openBytes(entryContent, tag, sealed);
    if (!plain) return plain.error();
    std::string_view rest = plain.value();
    const auto key = takeText(rest);
    auto value = key ? decodeProperty(rest) : std::nullopt;
    auto outcome = value ? Outcome<OpenedEntry, StoreStatus>({std::string(*key), std::move(*value)})
                         : Outcome<OpenedEntry, StoreStatus>(StoreStatus::damaged);
    sodium_memzero(plain.value().data(), plain.value().size());
    return outcome;
}

std::string StoreSealer::sealSummary(const StoreSummary& summary) const {
    return std::string(m_keyID.begin(), m_keyID.end()) + sealBytes(summaryContent, {}, imageOf(summary));
}

Outcome<StoreSummary, StoreStatus> StoreSealer::openSummary(std::string_view sealed) const {
    if (sealed.size() < m_keyID.size()) return StoreStatus::damaged;
    const auto plain = openBytes(summaryContent, {}, sealed.substr(m_keyID.size()));
    if (!plain) return isOwnSummary(sealed) ? plain.error() : StoreStatus::keyMismatch;
    return fromImage<StoreSummary>(plain.value());
}

bool StoreSealer::isOwnSummary(std::string_view sealed) const {
    return sealed.size() >= m_keyID.size() && std::memcmp(sealed.data(), m_keyID.data(), m_keyID.size()) == 0;
}

// Exclusive or of keyed digests: nobody without the key can choose entries that add up alike. An entry's
// authenticator stands for all of it: where the rest is another, it cannot be opened.
void StoreSealer::toggle(BucketSum& bucket, std::string_view tag, std::string_view sealed) const {
    std::array<char, 16 + authenticatorSize> image{};
    const std::string_view end = sealed.substr(sealed.size() - std::min(sealed.size(), authenticatorSize));
    std::copy(end.begin(), end.end(),
              std::copy_n(tag.begin(), std::min<std::size_t>(tag.size(), 16), image.begin()));
    const Digest digest = digestOf({image.data(), image.size()}, m_keys->digests);
    static_assert(std::tuple_size_v<decltype(bucket.sum)> <= std::tuple_size_v<Digest>);
    for (std::size_t i = 0; i < bucket.sum.size(); ++i) bucket.sum[i] ^= digest[i];
}

void StoreSealer::add(BucketSum& bucket, std::string_view tag, std::string_view sealed) const {
    toggle(bucket, tag, sealed);
    if (++bucket.count[0] == 0) ++bucket.count[1];
}

void StoreSealer::takeOut(BucketSum& bucket, std::string_view tag, std::string_view sealed) const {
    toggle(bucket, tag, sealed);
    if (bucket.count[0]-- == 0) --bucket.count[1];
}

std::string StoreSealer::sealSequence(std::uint64_t sequence) const {
    const std::string bytes(imageOf(sequence));
    const Digest check = digestOf(bytes, m_keys->digests);
    return std::string(bytes).append(check.begin(), check.end()).append(bytes);
}

std::optional<std::uint64_t> StoreSealer::openSequence(std::string_view sealed) const {
    const auto sequence = fromImage<std::uint64_t>(sealed.substr(0, sizeof(std::uint64_t)));
    if (!sequence) return std::nullopt;
    const auto checked = [](std::string_view bytes) { return bytes.substr(0, 24); };
    const bool isOwn = checked(sealSequence(sequence.value())) == checked(sealed);
    return isOwn ? std::optional(sequence.value()) : std::nullopt;
}

}  // namespace torvel
