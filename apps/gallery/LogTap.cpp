#include "gallery/LogTap.h"

#include "TorvelPlatform/dispatch/DispatchQueue.h"

#include <array>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace torvel::gallery {
namespace {

constexpr std::size_t keptLines = 200;

void writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written <= 0) return;
        bytes.remove_prefix(std::size_t(written));
    }
}

}  // namespace

// A thread reads, so that a writer on the main thread never waits for itself.
LogTap::LogTap(std::function<void()> changed) : m_changed(std::move(changed)) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return;
    std::fflush(stdout);
    m_output = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3);
    ::dup2(ends[1], STDOUT_FILENO);
    ::close(ends[1]);
    m_reader = std::jthread([this, pipe = ends[0]] { follow(pipe); });
}

LogTap::~LogTap() {
    if (!m_reader.joinable()) return;
    std::fflush(stdout);
    if (m_output < 0 || ::dup2(m_output, STDOUT_FILENO) < 0) ::close(STDOUT_FILENO);
    m_reader.join();  // the pipe has lost its last writer
    ::close(m_output);
}

void LogTap::follow(int pipe) {
    std::array<char, 4096> buffer;
    std::string rest;
    ssize_t count;
    while ((count = ::read(pipe, buffer.data(), buffer.size())) > 0) {
        writeAll(m_output, {buffer.data(), std::size_t(count)});
        rest.append(buffer.data(), std::size_t(count));
        for (std::size_t end; (end = rest.find('\n')) != std::string::npos; rest.erase(0, end + 1))
            DispatchQueue::main().async([this, line = rest.substr(0, end)] { take(line); });
    }
    ::close(pipe);
}

void LogTap::take(std::string line) {
    m_lines.push_back(std::move(line));
    if (m_lines.size() > keptLines) m_lines.pop_front();
    m_changed();
}

}  // namespace torvel::gallery
