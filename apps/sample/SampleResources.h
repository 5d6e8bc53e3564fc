#pragma once

#include <filesystem>
#include <system_error>

namespace torvel {

// The sample host's resources. In the build tree and where it is installed: beside the folder of the
// programs.
inline std::filesystem::path sampleResources() {
    std::error_code failed;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", failed);
    return program.parent_path().parent_path() / "share/torvel-sample";
}

}  // namespace torvel
