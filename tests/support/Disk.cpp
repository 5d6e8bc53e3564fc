#include "support/Disk.h"

#include <array>
#include <cerrno>
#include <fstream>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace torvel::testing {
namespace fs = std::filesystem;
namespace {

constexpr std::size_t sector = 512;

DiskRecorder* recorder = nullptr;  // of the test that runs, on its one thread

// The path of an open file if it is recorded: not the shared memory, which no power loss outlives.
std::string recordedPath(int descriptor) {
    if (recorder == nullptr) return {};
    std::array<char, 4096> path;
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    const std::string found(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    return recorder->isTold(found) && !found.ends_with("-shm") ? found : "";
}

}  // namespace

DiskRecorder::DiskRecorder(const fs::path& root) : m_root(root.native() + "/") { recorder = this; }
DiskRecorder::~DiskRecorder() { recorder = nullptr; }

void DiskRecorder::fail(int call, int error, bool isShort) {
    m_calls = 0;
    m_failing = call;
    m_error = error;
    m_isShort = isShort;
}

int DiskRecorder::errorOfNext(std::size_t* length) {
    if (m_calls++ != m_failing) return 0;
    if (!m_isShort || length == nullptr || *length < 2) return m_error;
    *length /= 2;
    ++m_failing;
    m_isShort = false;
    return 0;
}

void Disk::apply(std::string& content, const Write& write) {
    const std::size_t end = write.at + write.bytes.size();
    if (write.cuts || content.size() < end) content.resize(end);
    content.replace(write.at, write.bytes.size(), write.bytes);
}

int Disk::fileAt(const std::string& path) {
    const auto [found, isNew] = m_names.try_emplace(path, static_cast<int>(m_files.size()));
    if (isNew) {
        m_files.emplace_back();
        m_namings.push_back({path, found->second});
    }
    return found->second;
}

void Disk::take(const DiskRecorder::Event& event) {
    using Event = DiskRecorder::Event;
    if (event.kind == Event::renamed || event.kind == Event::removed) {
        const int file = fileAt(event.path);
        if (event.kind == Event::renamed) m_namings.push_back({event.target, m_names[event.target] = file});
        m_namings.push_back({event.path, -1});
        m_names.erase(event.path);
    } else if (event.kind == Event::synced && fs::path(event.path).extension().empty()) {  // a folder
        std::erase_if(m_namings, [&](const Naming& naming) {
            if (fs::path(naming.path).parent_path() != event.path) return false;
            m_safeNames[naming.path] = naming.file;
            return true;
        });
    } else if (event.kind != Event::acknowledged) {
        File& file = m_files[static_cast<std::size_t>(fileAt(event.path))];
        if (event.kind == Event::wrote || event.kind == Event::cut) {
            file.pending.push_back({event.at, event.bytes, event.kind == Event::cut});
            return;
        }
        for (const Write& write : file.pending) {
            if (event.kind == Event::synced) apply(file.safe, write);
        }
        file.pending.clear();
    }
}

Disk::Files Disk::afterPowerLoss(Kept kept, std::mt19937& random) const {
    const auto isKept = [&] { return kept == everything || (kept == some && random() % 2 == 0); };
    std::map<std::string, int> names = m_safeNames;
    for (const Naming& naming : m_namings) {
        if (kept == nothing || (kept == some && random() % 8 == 0)) break;
        names[naming.path] = naming.file;
    }
    Files files;
    for (const auto& [path, number] : names) {
        if (number < 0) continue;
        const File& file = m_files[static_cast<std::size_t>(number)];
        std::string content = file.safe;
        for (const Write& write : file.pending) {
            if (write.cuts && isKept()) apply(content, write);
            for (std::size_t at = 0; at < write.bytes.size();) {
                const std::size_t length =
                    std::min(sector - (write.at + at) % sector, write.bytes.size() - at);
                if (isKept()) apply(content, {write.at + at, write.bytes.substr(at, length), false});
                at += length;
            }
        }
        files[path] = content;
    }
    return files;
}

void Disk::restore(const fs::path& root, const Files& files) {
    for (const fs::path& folder : {root / "data", root / "state"}) fs::remove_all(folder);
    const mode_t before = ::umask(S_IRWXG | S_IRWXO);
    for (const auto& [path, content] : files) {
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary).write(content.data(), content.find_last_not_of('\0') + 1);
        fs::resize_file(path, content.size());
    }
    ::umask(before);
}

}  // namespace torvel::testing

using torvel::testing::recordedPath;
using torvel::testing::recorder;
using Event = torvel::testing::DiskRecorder::Event;

// Makes a call unless it is to fail, and tells what it did.
template <class Call>
static long told(const std::string& path, Event event, std::size_t* length, Call call) {
    if (path.empty()) return call();
    const int error = recorder->errorOfNext(length);
    const long result = error == 0 ? call() : -1;
    if (error != 0) errno = error;
    if (result < 0 && event.kind != Event::synced) return result;
    if (result < 0) event.kind = Event::lostSync;
    if (event.kind == Event::wrote) event.bytes.resize(static_cast<std::size_t>(result));
    recorder->events.push_back(std::move(event));
    return result;
}

static ssize_t toldWrite(int file, const void* bytes, std::size_t length, off_t at, bool isPlaced) {
    const std::string path = recordedPath(file);
    if (!path.empty() && !isPlaced) at = ::lseek(file, 0, SEEK_CUR);
    const std::string copy = path.empty() ? "" : std::string(static_cast<const char*>(bytes), length);
    return told(path, {Event::wrote, path, {}, static_cast<std::size_t>(at), copy}, &length, [&] {
        return isPlaced ? ::syscall(SYS_pwrite64, file, bytes, length, at)
                        : ::syscall(SYS_write, file, bytes, length);
    });
}

static int toldSync(int file, long number) {
    const std::string path = recordedPath(file);
    return static_cast<int>(told(path, {Event::synced, path}, nullptr,
                                 [&] { return path.empty() ? ::syscall(number, file) : 0; }));
}

extern "C" {
ssize_t write(int file, const void* bytes, std::size_t length) {
    return toldWrite(file, bytes, length, 0, false);
}
ssize_t pwrite(int file, const void* bytes, std::size_t length, off_t at) {
    return toldWrite(file, bytes, length, at, true);
}
ssize_t pwrite64(int file, const void* bytes, std::size_t length, off_t at) {
    return toldWrite(file, bytes, length, at, true);
}
int fsync(int file) { return toldSync(file, SYS_fsync); }
int fdatasync(int file) { return toldSync(file, SYS_fdatasync); }
int ftruncate64(int file, off_t size) noexcept {
    const std::string path = recordedPath(file);
    return static_cast<int>(told(path, {Event::cut, path, {}, static_cast<std::size_t>(size)}, nullptr,
                                 [&] { return ::syscall(SYS_ftruncate, file, size); }));
}
int rename(const char* from, const char* to) noexcept {
    const bool isRecorded = recorder != nullptr && recorder->isTold(from);
    return static_cast<int>(told(isRecorded ? from : "", {Event::renamed, from, to}, nullptr,
                                 [&] { return ::syscall(SYS_rename, from, to); }));
}
int unlink(const char* path) noexcept {
    const bool isRecorded = recorder != nullptr && recorder->isTold(path);
    return static_cast<int>(told(isRecorded ? path : "", {Event::removed, path}, nullptr,
                                 [&] { return ::syscall(SYS_unlink, path); }));
}
}
