#pragma once

#include "TorvelPlatform/foundation/Bundle.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <string_view>

#include <stdlib.h>

namespace torvel::testing {

// The folders of a host whose store's files are kept aside, to be put back with changes. Removed afterwards.
class StoreFolder {
  public:
    StoreFolder() {
        std::string made = (std::filesystem::temp_directory_path() / "torvel-store-XXXXXX").string();
        m_root = ::mkdtemp(made.data());
        ::setenv("XDG_DATA_HOME", (m_root / "data").c_str(), 1);
        ::setenv("XDG_STATE_HOME", (m_root / "state").c_str(), 1);
        Bundle::setMain(m_root, "fuzz-host");
    }
    ~StoreFolder() { std::filesystem::remove_all(m_root); }
    StoreFolder(const StoreFolder&) = delete;
    StoreFolder& operator=(const StoreFolder&) = delete;

    // Whether there was anything to keep.
    bool keep() {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(m_root)) {
            std::ifstream stream(entry.path(), std::ios::binary);
            if (entry.is_regular_file() && entry.path().extension() != ".db-shm")
                m_files[entry.path()].assign(std::istreambuf_iterator<char>(stream), {});
        }
        return !m_files.empty();
    }

    // The first bit of three bytes chooses between the first two files, by their paths; the others are an
    // offset and what is turned over there.
    void restore(std::string_view changes) const {
        auto files = m_files;
        for (; changes.size() >= 3; changes.remove_prefix(3)) {
            const unsigned at =
                static_cast<unsigned char>(changes[0]) * 256U + static_cast<unsigned char>(changes[1]);
            std::string& content = std::next(files.begin(), at >> 15)->second;
            content[(at & 0x7FFF) % content.size()] ^= changes[2];
        }
        for (const auto& [path, content] : files) {
            std::filesystem::remove(path.native() + "-shm");
            std::ofstream(path, std::ios::binary) << content;
        }
    }

  private:
    std::filesystem::path m_root;
    std::map<std::filesystem::path, std::string> m_files;
};

}  // namespace torvel::testing
