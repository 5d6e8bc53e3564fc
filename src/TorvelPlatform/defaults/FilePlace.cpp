#include "TorvelPlatform/defaults/FilePlace.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace torvel {
namespace {

// 0 where there is no file. Never asks for the times: once they were asked for, the next write gives the file
// a finer one, and the sync of any file then also writes the block that both files' inodes lie in.
std::uint64_t inodeOf(int directory, const char* name) {
    struct statx status {};
    constexpr int flags = AT_EMPTY_PATH | AT_SYMLINK_NOFOLLOW;
    return ::statx(directory, name, flags, STATX_INO, &status) == 0 ? status.stx_ino : 0;
}

}  // namespace

void FilePlace::remember(int file) {
    m_directory = Descriptor(::open(m_path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    m_inode = inodeOf(file, "");
}

bool FilePlace::isUnchanged() const {
    return m_directory && m_inode != 0 && inodeOf(m_directory.get(), m_name.c_str()) == m_inode;
}

}  // namespace torvel
