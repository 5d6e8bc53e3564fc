#pragma once  // internal

#include "TorvelPlatform/defaults/Descriptor.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "TorvelPlatform/defaults/StoreKey.h"

#include <filesystem>
#include <string>

namespace torvel {

// Where this process keeps keys.
void setKeyPlace(SecureDefaults::KeyPlace place);

// Where one store lies. Its data has a directory of its own, so that it can be moved aside in one step; its
// key lies in another tree. Beside the key stands the sequence number of the last write, which is never
// synced: it may fall behind the data, but gets ahead of it only when data was lost or put back.
//
//   <data>/store/<id>/entries.db   (0700, 0600)
//   <state>/keys/<id>.key          (0700, 0600), or in the Secret Service
//   <state>/keys/<id>.last
class StoreFiles {
  public:
    explicit StoreFiles(const StoreID& id);

    const std::filesystem::path& directory() const { return m_directory; }
    std::filesystem::path database() const { return m_directory / "entries.db"; }
    const std::filesystem::path& lastSequence() const { return m_last; }
    bool hasData() const;

    // The key, from where the host keeps keys.
    Outcome<RootKey, StoreStatus> loadKey() const;  // noKey when there is none
    StoreStatus saveKey(const RootKey& key) const;

    // networkFileSystem where SQLite's locks and shared memory cannot be relied on.
    StoreStatus makeDirectory() const;
    // Excludes other processes from creating, opening or moving aside any store of the host while it lives;
    // does nothing where no store has been made yet.
    Descriptor lock() const;

    // Renames data, key and sequence number to the same names with a number behind.
    StoreStatus moveAside() const;

  private:
    std::string m_name;  // among the keys of the Secret Service
    std::filesystem::path m_directory, m_key, m_last;
};

}  // namespace torvel
