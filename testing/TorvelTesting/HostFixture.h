#pragma once

#include "TorvelLibrary/TorvelLibrary.h"
#include "TorvelLibrary/Utils/LogUtils.h"
#include "TorvelPlatform/foundation/Bundle.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>
#include <stdlib.h>

namespace torvel::testing {

// A host application with an empty main bundle and folders of its own, removed afterwards.
class HostFixture : public ::testing::Test {
  protected:
    HostFixture() {
        std::string name = (std::filesystem::temp_directory_path() / "torvel-test-XXXXXX").string();
        m_directory = ::mkdtemp(name.data());
        ::setenv("XDG_DATA_HOME", (m_directory / "data").c_str(), 1);
        ::setenv("XDG_STATE_HOME", (m_directory / "state").c_str(), 1);
        Bundle::setMain(m_directory, "test-host");
    }
    ~HostFixture() override { std::filesystem::remove_all(m_directory); }

    const std::filesystem::path& directory() const { return m_directory; }

    // Adds a resource and returns its path.
    std::filesystem::path addResource(const std::string& name, std::string_view content) const {
        const std::filesystem::path path = m_directory / name;
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    // What `work` writes to the log, without the dates.
    template <class Work>
    static std::string logOf(Work work) {
        LogUtils::setDateFormat("");
        LogUtils::setLoggingEnabled(true);
        ::testing::internal::CaptureStdout();
        work();
        LogUtils::setLoggingEnabled(false);
        return ::testing::internal::GetCapturedStdout();
    }

  private:
    std::filesystem::path m_directory;
};

}  // namespace torvel::testing
