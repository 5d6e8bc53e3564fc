#include "TorvelPlatform/http/SpoolFile.h"

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include <fcntl.h>

namespace torvel {
namespace {

FileDescriptor openNameless() {
    std::error_code ignored;
    std::string path = std::filesystem::temp_directory_path(ignored).native();
    if (path.empty()) path = "/tmp";
    FileDescriptor file(open(path.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    if (file) return file;
    // Not every file system knows nameless files.
    path += "/torvel-upload-XXXXXX";
    file = FileDescriptor(mkostemp(path.data(), O_CLOEXEC));
    if (file) unlink(path.c_str());
    return file;
}

bool writeAll(const FileDescriptor& file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file.get(), bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

std::optional<SpoolFile> SpoolFile::write(const MultipartFormData& form) {
    FileDescriptor file = openNameless();
    if (!file) return std::nullopt;
    for (std::size_t part = 0; part < form.parts().size(); ++part) {
        if (!writeAll(file, form.head(part)) || !writeAll(file, form.parts()[part].content.raw()))
            return std::nullopt;
    }
    if (!writeAll(file, form.tail())) return std::nullopt;
    return SpoolFile(std::move(file), form.contentLength());
}

std::optional<std::size_t> SpoolFile::read(std::size_t offset, std::span<char> buffer) const {
    for (;;) {
        const ssize_t count = pread(m_file.get(), buffer.data(), buffer.size(), static_cast<off_t>(offset));
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) return std::nullopt;
    }
}

}  // namespace torvel
