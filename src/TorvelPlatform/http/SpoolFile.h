#pragma once  // internal

#include "TorvelPlatform/http/FileDescriptor.h"
#include "TorvelPlatform/http/MultipartFormData.h"

#include <cstddef>
#include <optional>
#include <span>

namespace torvel {

// A multipart body in a temporary file that has no name, so that nothing is left behind however the process
// ends. Readable by this user alone; in TMPDIR, or /tmp.
class SpoolFile {
  public:
    // Absent when the file cannot be written; errno then says why.
    static std::optional<SpoolFile> write(const MultipartFormData& form);

    std::size_t size() const { return m_size; }
    // Fills `buffer` from `offset` on; how many bytes that gave, or absent on a read error.
    std::optional<std::size_t> read(std::size_t offset, std::span<char> buffer) const;

  private:
    SpoolFile(FileDescriptor file, std::size_t size) : m_file(std::move(file)), m_size(size) {}

    FileDescriptor m_file;
    std::size_t m_size;
};

}  // namespace torvel
