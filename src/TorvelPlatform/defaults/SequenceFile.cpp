#include "TorvelPlatform/defaults/SequenceFile.h"

#include "TorvelPlatform/defaults/StoreKey.h"
#include "TorvelPlatform/foundation/File.h"

#include <cerrno>
#include <cstddef>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace torvel {
namespace {

bool isEmpty(int file) {  // without asking for its times, see FilePlace
    struct statx status {};
    return ::statx(file, "", AT_EMPTY_PATH, STATX_SIZE, &status) != 0 || status.stx_size == 0;
}

}  // namespace

std::string SequenceFile::content() const {
    auto content = readFile(m_path);
    return content ? std::move(content).value().raw() : std::string();
}

// The file under the name; whoever still has another that was there is told.
bool SequenceFile::open(int flags) {
    if (m_file && m_place.isUnchanged()) return true;
    retireHeld();
    detach();
    m_file = Descriptor(::open(m_path.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC | flags, S_IRUSR | S_IWUSR));
    if (m_file) m_place.remember(m_file.get());  // else errno says why not
    return static_cast<bool>(m_file);
}

void SequenceFile::attach() {
    if (!open(0) || page() != nullptr || isEmpty(m_file.get())) return;
    void* const mapped = ::mmap(nullptr, sizeof(Page), PROT_READ, MAP_SHARED, m_file.get(), 0);
    if (mapped != MAP_FAILED) m_page = static_cast<const Page*>(mapped);
}

bool SequenceFile::write(const void* bytes, std::size_t size, std::size_t at) const {
    errno = ENOSPC;  // what a short write means
    return ::pwrite(m_file.get(), bytes, size, static_cast<off_t>(at)) == static_cast<ssize_t>(size);
}

// Cut to its size where it was retired; never to less, as others have it mapped.
void SequenceFile::set(std::string_view sealed) {
    if (open(O_CREAT) && ::ftruncate(m_file.get(), static_cast<off_t>(sealed.size())) == 0)
        write(sealed.data(), sealed.size(), 0);
}

StoreStatus SequenceFile::announce(std::uint64_t sequence) {
    const bool isDone = open(O_CREAT) && write(&sequence, sizeof sequence, offsetof(Page, announced));
    if (!isDone) return statusOfSystemError(errno);
    if (page() == nullptr) attach();
    return StoreStatus::ok;
}

void SequenceFile::tell(std::string_view sealed) {
    if (m_file) write(sealed.data(), offsetof(Page, announced), 0);
}

void SequenceFile::retireHeld() const {
    constexpr std::uint8_t retired = 1;
    if (m_file) write(&retired, sizeof retired, offsetof(Page, isRetired));
}

void SequenceFile::retire() {
    if (open(0)) retireHeld();
    detach();
}

StoreStatus SequenceFile::forget() {
    retire();
    return ::unlink(m_path.c_str()) == 0 || errno == ENOENT ? StoreStatus::ok : statusOfSystemError(errno);
}

}  // namespace torvel
