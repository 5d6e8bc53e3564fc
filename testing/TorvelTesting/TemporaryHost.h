#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace torvel::testing {

// A host application with an empty main bundle, and with folders of its own for the store and the log's
// companions, all in one temporary folder that is removed at the end. What the library reads once a process
// (endpoint table, configuration, server key) stays what the first reader found: run each test in a process
// of its own, as gtest_discover_tests does.
class TemporaryHost {
  public:
    TemporaryHost();
    ~TemporaryHost();
    TemporaryHost(const TemporaryHost&) = delete;
    TemporaryHost& operator=(const TemporaryHost&) = delete;

    // The main bundle's folder.
    const std::filesystem::path& directory() const { return m_directory; }

    // Adds a resource to the main bundle, folders included, and returns its path.
    std::filesystem::path addResource(const std::string& name, std::string_view content) const;

  private:
    std::filesystem::path m_directory;
};

}  // namespace torvel::testing
