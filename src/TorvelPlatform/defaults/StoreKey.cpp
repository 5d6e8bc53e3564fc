#include "TorvelPlatform/defaults/StoreKey.h"

#include "TorvelPlatform/defaults/Descriptor.h"
#include "TorvelPlatform/foundation/UserDirectories.h"

#include <algorithm>
#include <cerrno>
#include <span>

#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

namespace torvel {
namespace {

constexpr std::array<std::uint8_t, 16> derivation{'t', 'o', 'r', 'v', 'e', 'l', ' ', 's',
                                                  't', 'o', 'r', 'e', ' ', 'k', 'e', 'y'};
constexpr std::array<std::uint8_t, 8> keyFileHead{'t', 'o', 'r', 'v', 'e', 'l', 'k', 1};
constexpr std::size_t checkSize = 16;
constexpr std::size_t checkedSize = keyFileHead.size() + sizeof(RootKey);

using KeyFile = SecretBytes<checkedSize + checkSize>;

KeyFile keyFileOf(const RootKey& key) {
    KeyFile file;
    std::copy(key.begin(), key.end(), std::copy(keyFileHead.begin(), keyFileHead.end(), file.begin()));
    crypto_generichash(file.data() + checkedSize, checkSize, file.data(), checkedSize, nullptr, 0);
    return file;
}

bool isPrivate(int file) {
    struct stat status {};
    return ::fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == ::geteuid() &&
           (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

bool isWritableByOthers(const std::filesystem::path& directory) {
    struct stat status {};
    return ::stat(directory.c_str(), &status) != 0 || (status.st_mode & (S_IWGRP | S_IWOTH)) != 0;
}

bool writeDurably(int file, std::span<const std::uint8_t> bytes) {
    return ::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
           ::fsync(file) == 0;
}

}  // namespace

StoreID storeID(std::string_view domain) {
    StoreID id;
    crypto_generichash(id.data(), id.size(), reinterpret_cast<const std::uint8_t*>(domain.data()),
                       domain.size(), nullptr, 0);
    return id;
}

std::string hexadecimal(const StoreID& id) {
    std::string text(2 * id.size() + 1, '\0');
    sodium_bin2hex(text.data(), text.size(), id.data(), id.size());
    text.pop_back();
    return text;
}

RootKey deriveRootKey(std::string_view password, const StoreID& store) {
    static_assert(crypto_generichash_blake2b_SALTBYTES == sizeof(StoreID));
    RootKey key;
    crypto_generichash_blake2b_salt_personal(key.data(), key.size(),
                                             reinterpret_cast<const std::uint8_t*>(password.data()),
                                             password.size(), nullptr, 0, store.data(), derivation.data());
    return key;
}

Outcome<RootKey, StoreStatus> loadKeyFile(const std::filesystem::path& file) {
    // Not to block on a pipe, which isPrivate refuses.
    const Descriptor opened(::open(file.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!opened && (errno == ENOENT || errno == ENOTDIR)) return StoreStatus::noKey;
    if (!opened) return errno == ELOOP || errno == EACCES ? StoreStatus::keyUnsafe : StoreStatus::unavailable;
    if (!isPrivate(opened.get()) || isWritableByOthers(file.parent_path())) return StoreStatus::keyUnsafe;

    KeyFile content;
    std::uint8_t beyond;
    const bool isWhole =
        ::read(opened.get(), content.data(), content.size()) == static_cast<ssize_t>(content.size()) &&
        ::read(opened.get(), &beyond, 1) == 0;
    RootKey key;
    std::copy_n(content.begin() + keyFileHead.size(), key.size(), key.begin());
    const bool hasNewerHead = std::equal(keyFileHead.begin(), keyFileHead.end() - 1, content.begin()) &&
                              content[keyFileHead.size() - 1] > keyFileHead.back();
    if (isWhole && keyFileOf(key) == content) return key;
    return hasNewerHead ? StoreStatus::newerFormat : StoreStatus::keyDamaged;
}

StoreStatus writeKeyFile(const std::filesystem::path& file, const RootKey& key) {
    if (const auto failed = makePrivateDirectory(file.parent_path()))
        return statusOfSystemError(failed.value());
    const std::filesystem::path temporary = file.native() + ".new";
    ::unlink(temporary.c_str());  // left by a process that was killed
    const Descriptor opened(
        ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!opened || !writeDurably(opened.get(), keyFileOf(key)) ||
        ::rename(temporary.c_str(), file.c_str()) != 0)
        return statusOfSystemError(errno);
    if (syncDirectory(file.parent_path())) return StoreStatus::ok;
    const StoreStatus status = statusOfSystemError(errno);
    ::unlink(file.c_str());  // or the next attempt would rely on a name that a loss of power takes away
    return status;
}

StoreStatus statusOfSystemError(int error) {
    switch (error) {
        case EROFS:
        case EACCES:
        case EPERM:
            return StoreStatus::readOnly;
        case ENOSPC:
        case EDQUOT:
        case EFBIG:
            return StoreStatus::diskFull;
        default:
            return StoreStatus::unavailable;
    }
}

}  // namespace torvel
