#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace torvel::bench {

// A folder of its own that goes with this object.
class Folder {
  public:
    Folder();
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::filesystem::path operator/(const std::string& name) const { return m_path / name; }
    const std::filesystem::path& path() const { return m_path; }
    // Folders on the way are made.
    void write(const std::string& name, std::string_view content) const;

  private:
    std::filesystem::path m_path;
};

}  // namespace torvel::bench
