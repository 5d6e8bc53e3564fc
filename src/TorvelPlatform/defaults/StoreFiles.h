#pragma once  // internal

#include "TorvelPlatform/defaults/Descriptor.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "TorvelPlatform/defaults/StoreKey.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include <sys/types.h>

namespace torvel {

// The head of the file with the sequence number of the last write, mapped: every write of any process shows
// in it at once, without a system call. It stays mapped as long as the process lives.
struct SequencePage {
    std::uint64_t sequence;
    std::uint8_t check[16];
    std::uint64_t announced;  // another number while a write is under way, or when its process was killed
    std::uint8_t rest[32];
    std::uint8_t isRetired;  // beyond the file's end, hence 0, until the store is moved aside
};

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
    bool hasData() const;

    // The key, from where the host keeps keys.
    Outcome<RootKey, StoreStatus> loadKey() const;  // noKey when there is none
    StoreStatus saveKey(const RootKey& key) const;

    // networkFileSystem where SQLite's locks and shared memory cannot be relied on.
    StoreStatus makeDirectory() const;
    // Excludes other processes from creating, opening or moving aside any store of the host while it lives;
    // does nothing where no store has been made yet.
    Descriptor lock() const;

    std::string lastSequence() const;  // empty when there is none
    void setLastSequence(std::string_view sealed) const;
    // Under the database's lock for writing, before the write is made: without it others might miss it.
    StoreStatus announce(std::uint64_t sequence) const;
    // After the write was made. The announcement stays: it may be another's by now.
    void tell(std::string_view sealed) const;
    // nullptr when there is none. The page that was mapped before is kept where it is still that of the file.
    struct Mapping {
        const SequencePage* page = nullptr;
        ino_t file = 0;
    };
    Mapping mapLastSequence(const Mapping& before) const;
    // Has all who have it mapped look anew.
    void retireLastSequence() const;
    StoreStatus forgetLastSequence() const;

    // Renames data, key and sequence number to the same names with a number behind.
    StoreStatus moveAside() const;

  private:
    bool writeLast(const void* bytes, std::size_t size, std::size_t at) const;

    std::string m_name;  // among the keys of the Secret Service
    std::filesystem::path m_directory, m_key, m_last;
};

}  // namespace torvel
