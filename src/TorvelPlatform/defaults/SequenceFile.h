#pragma once  // internal

#include "TorvelPlatform/defaults/Descriptor.h"
#include "TorvelPlatform/defaults/FilePlace.h"
#include "TorvelPlatform/defaults/StoreStatus.h"

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace torvel {

// The file with the sequence number of the last write to a store, kept open and mapped: every write of any
// process shows in it at once, without a system call. It is never synced.
class SequenceFile {
  public:
    // What a file holds. It stays mapped as long as the process lives.
    struct Page {
        std::uint64_t sequence;
        std::uint8_t check[16];
        std::uint64_t announced;  // another number while a write is under way, or when its process was killed
        std::uint8_t rest[32];
        std::uint8_t isRetired;  // beyond the file's end, hence 0, until nobody is to rely on it any longer
    };

    explicit SequenceFile(const std::filesystem::path& path)
        : m_path(path), m_place(path.parent_path(), path.filename()) {}

    const std::filesystem::path& path() const { return m_path; }
    std::string content() const;  // as the file under its name has it now; empty when there is none

    // The page of the file that was taken hold of last, for any thread; nullptr when there is none.
    const Page* page() const { return m_page.load(std::memory_order_acquire); }
    // Takes hold of the file under the name, where there is one with something in it.
    void attach();

    // Writes all of it, where it can be written.
    void set(std::string_view sealed);
    // Under the database's lock for writing, before the write is made: without it others might miss it.
    // Where the file was removed or renamed since, makes another, and retires the one that others still have.
    StoreStatus announce(std::uint64_t sequence);
    // After the write was made. The announcement stays: it may be another's by now.
    void tell(std::string_view sealed);
    // Has all who have it mapped look anew, and lets go of it.
    void retire();
    // Retires and removes it.
    StoreStatus forget();

  private:
    bool open(int flags);
    void retireHeld() const;
    void detach() { m_page = nullptr; }
    bool write(const void* bytes, std::size_t size, std::size_t at) const;

    const std::filesystem::path m_path;
    Descriptor m_file{-1};
    FilePlace m_place;
    std::atomic<const Page*> m_page{nullptr};
};

}  // namespace torvel
