#include "TorvelPlatform/defaults/StoreFiles.h"

#include "TorvelPlatform/foundation/File.h"
#include "TorvelPlatform/foundation/UserDirectories.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace torvel {
namespace fs = std::filesystem;
namespace {

fs::path numbered(const fs::path& path, int number) {
    return path.native() + ".aside-" + std::to_string(number);
}

bool moveIfThere(const fs::path& path, int number) {
    return ::rename(path.c_str(), numbered(path, number).c_str()) == 0 || errno == ENOENT;
}

bool isThere(const fs::path& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0;
}

}  // namespace

StoreFiles::StoreFiles(const StoreID& id)
    : m_directory(UserDirectories::data() / "store" / hexadecimal(id)),
      m_key(UserDirectories::state() / "keys" / (hexadecimal(id) + ".key")),
      m_last(UserDirectories::state() / "keys" / (hexadecimal(id) + ".last")) {}

bool StoreFiles::hasData() const {
    struct stat status {};
    return ::stat(database().c_str(), &status) == 0 && status.st_size > 0;
}

StoreStatus StoreFiles::makeDirectory() const {
    for (const fs::path& directory : {m_directory.parent_path(), m_directory}) {
        if (const auto failed = makePrivateDirectory(directory)) return statusOfSystemError(failed.value());
    }
    return StoreStatus::ok;
}

Descriptor StoreFiles::lock() const {
    Descriptor opened(::open(m_directory.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    while (opened && ::flock(opened.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
    return opened;
}

std::string StoreFiles::lastSequence() const {
    auto content = readFile(m_last);
    return content ? std::move(content).value().raw() : std::string();
}

void StoreFiles::setLastSequence(std::string_view sealed) const {
    const Descriptor opened(
        ::open(m_last.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!opened) return;
    [[maybe_unused]] const ssize_t written = ::pwrite(opened.get(), sealed.data(), sealed.size(), 0);
}

const SequencePage* StoreFiles::mapLastSequence() const {
    const Descriptor opened(::open(m_last.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    if (!opened || ::fstat(opened.get(), &status) != 0 || status.st_size == 0) return nullptr;
    void* const page = ::mmap(nullptr, sizeof(SequencePage), PROT_READ, MAP_SHARED, opened.get(), 0);
    return page == MAP_FAILED ? nullptr : static_cast<const SequencePage*>(page);
}

void StoreFiles::retireLastSequence() const {
    const Descriptor opened(::open(m_last.c_str(), O_WRONLY | O_NOFOLLOW | O_CLOEXEC));
    if (!opened) return;
    constexpr std::uint8_t retired = 1;
    [[maybe_unused]] const ssize_t written =
        ::pwrite(opened.get(), &retired, sizeof retired, offsetof(SequencePage, isRetired));
}

// Data first: whatever stops this half way, no data is left without its key.
StoreStatus StoreFiles::moveAside() const {
    int number = 1;
    while (isThere(numbered(m_directory, number)) || isThere(numbered(m_key, number))) ++number;
    if (moveIfThere(m_directory, number) && moveIfThere(m_key, number) && moveIfThere(m_last, number) &&
        syncDirectory(m_directory.parent_path()) && (syncDirectory(m_key.parent_path()) || errno == ENOENT))
        return StoreStatus::ok;
    return statusOfSystemError(errno);
}

}  // namespace torvel
