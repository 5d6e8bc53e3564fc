#include "TorvelPlatform/defaults/StoreFiles.h"

#include "TorvelPlatform/defaults/SecretService.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/UserDirectories.h"

#include <algorithm>
#include <atomic>
#include <cerrno>

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/vfs.h>

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

// By the numbers of statfs(2). FUSE is taken for local: it cannot be told.
bool isOnNetwork(const fs::path& directory) {
    constexpr std::uint32_t networks[] = {
        NFS_SUPER_MAGIC, SMB_SUPER_MAGIC, SMB2_SUPER_MAGIC, CIFS_SUPER_MAGIC, CODA_SUPER_MAGIC,
        AFS_SUPER_MAGIC, AFS_FS_MAGIC,    V9FS_MAGIC,       CEPH_SUPER_MAGIC, NCP_SUPER_MAGIC};
    struct statfs status {};
    return ::statfs(directory.c_str(), &status) == 0 &&
           std::find(std::begin(networks), std::end(networks), static_cast<std::uint32_t>(status.f_type)) !=
               std::end(networks);
}

std::atomic<SecureDefaults::KeyPlace> keyPlace{SecureDefaults::KeyPlace::file};

}  // namespace

void setKeyPlace(SecureDefaults::KeyPlace place) { keyPlace = place; }

StoreFiles::StoreFiles(const StoreID& id)
    : m_name(Bundle::main().identifier() + "/" + hexadecimal(id)),
      m_directory(UserDirectories::data() / "store" / hexadecimal(id)),
      m_key(UserDirectories::state() / "keys" / (hexadecimal(id) + ".key")),
      m_last(UserDirectories::state() / "keys" / (hexadecimal(id) + ".last")) {}

bool StoreFiles::hasData() const {
    struct stat status {};
    return ::stat(database().c_str(), &status) == 0 && status.st_size > 0;
}

Outcome<RootKey, StoreStatus> StoreFiles::loadKey() const {
    return keyPlace == SecureDefaults::KeyPlace::file ? loadKeyFile(m_key) : secretService::load(m_name);
}

StoreStatus StoreFiles::saveKey(const RootKey& key) const {
    if (keyPlace == SecureDefaults::KeyPlace::file) return writeKeyFile(m_key, key);
    if (const auto failed = makePrivateDirectory(m_last.parent_path()))
        return statusOfSystemError(failed.value());
    return secretService::save(m_name, key);
}

StoreStatus StoreFiles::makeDirectory() const {
    for (const fs::path& directory : {m_directory.parent_path(), m_directory}) {
        if (const auto failed = makePrivateDirectory(directory)) return statusOfSystemError(failed.value());
    }
    return isOnNetwork(m_directory) ? StoreStatus::networkFileSystem : StoreStatus::ok;
}

Descriptor StoreFiles::lock() const {
    Descriptor opened(::open(m_directory.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    while (opened && ::flock(opened.get(), LOCK_EX) != 0 && errno == EINTR) {
    }
    return opened;
}

// A key in the Secret Service is copied first, else data goes first: whatever stops this half way, no data is
// left without its key.
StoreStatus StoreFiles::moveAside() const {
    int number = 1;
    while (isThere(numbered(m_directory, number)) || isThere(numbered(m_key, number))) ++number;
    if (keyPlace == SecureDefaults::KeyPlace::secretService) {
        const StoreStatus moved = secretService::rename(m_name, m_name + ".aside-" + std::to_string(number));
        if (moved != StoreStatus::ok) return moved;
    }
    if (moveIfThere(m_directory, number) && moveIfThere(m_key, number) && moveIfThere(m_last, number) &&
        syncDirectory(m_directory.parent_path()) && (syncDirectory(m_key.parent_path()) || errno == ENOENT))
        return StoreStatus::ok;
    return statusOfSystemError(errno);
}

}  // namespace torvel
