#include "TorvelTesting/TemporaryHost.h"

#include "TorvelPlatform/foundation/Bundle.h"

#include <fstream>

#include <stdlib.h>

namespace torvel::testing {

TemporaryHost::TemporaryHost() {
    std::string name = (std::filesystem::temp_directory_path() / "torvel-test-XXXXXX").string();
    m_directory = ::mkdtemp(name.data());
    ::setenv("XDG_DATA_HOME", (m_directory / "data").c_str(), 1);
    ::setenv("XDG_STATE_HOME", (m_directory / "state").c_str(), 1);
    Bundle::setMain(m_directory, "test-host");
}

TemporaryHost::~TemporaryHost() { std::filesystem::remove_all(m_directory); }

std::filesystem::path TemporaryHost::addResource(const std::string& name, std::string_view content) const {
    const std::filesystem::path path = m_directory / name;
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path, std::ios::binary) << content;
    return path;
}

}  // namespace torvel::testing
