#pragma once  // internal

#include "TorvelPlatform/defaults/StoreStatus.h"
#include "TorvelPlatform/foundation/Outcome.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include <string.h>

namespace torvel {

using StoreID = std::array<std::uint8_t, 16>;

// The hash by which files and sealed bytes know a domain.
StoreID storeID(std::string_view domain);
std::string hexadecimal(const StoreID& id);

// Bytes that are wiped with their owner.
template <std::size_t Size>
struct SecretBytes : std::array<std::uint8_t, Size> {
    SecretBytes() : std::array<std::uint8_t, Size>{} {}
    SecretBytes(const SecretBytes&) = default;
    SecretBytes& operator=(const SecretBytes&) = default;
    ~SecretBytes() { explicit_bzero(this->data(), Size); }
};

// The one secret of a store.
using RootKey = SecretBytes<32>;

// From a password that must be random already, such as a UUID: one hash (BLAKE2b), not a slow derivation.
RootKey deriveRootKey(std::string_view password, const StoreID& store);

// The file that keeps a root key: "torvelk" and a version byte, the key, a check sum. It must be a regular
// file of the user's own, with no rights for others, in a directory that others cannot write to.
Outcome<RootKey, StoreStatus> loadKeyFile(const std::filesystem::path& file);  // noKey when there is none
// Durable when it returns; replaces a file of that name.
StoreStatus writeKeyFile(const std::filesystem::path& file, const RootKey& key);

// How an error number of the system is told.
StoreStatus statusOfSystemError(int error);

}  // namespace torvel
