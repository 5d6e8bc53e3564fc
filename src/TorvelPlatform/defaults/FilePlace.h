#pragma once  // internal

#include "TorvelPlatform/defaults/Descriptor.h"

#include <cstdint>
#include <filesystem>
#include <string>

namespace torvel {

// A name in a directory, and which file lay there once: by which it is told that the file was moved away,
// removed or replaced. The directory is held open, as a look from the root costs three times as much.
class FilePlace {
  public:
    FilePlace(std::filesystem::path directory, std::string name)
        : m_path(std::move(directory)), m_name(std::move(name)) {}

    // Remembers an open file as the one that is to lie there.
    void remember(int file);
    // Whether it still lies there.
    bool isUnchanged() const;

  private:
    std::filesystem::path m_path;
    std::string m_name;
    Descriptor m_directory{-1};
    std::uint64_t m_inode = 0;  // its number
};

}  // namespace torvel
