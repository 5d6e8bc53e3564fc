#include "TorvelPlatform/foundation/UserDirectories.h"

#include "TorvelPlatform/foundation/Bundle.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include <fcntl.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace torvel {
namespace fs = std::filesystem;
namespace {

fs::path absoluteFromEnvironment(const char* variable) {
    const char* const value = std::getenv(variable);
    const fs::path path = value != nullptr ? value : "";
    return path.is_absolute() ? path : fs::path();
}

fs::path home() {
    if (fs::path given = absoluteFromEnvironment("HOME"); !given.empty()) return given;
    passwd entry{};
    passwd* found = nullptr;
    char texts[4096];
    getpwuid_r(::geteuid(), &entry, texts, sizeof texts, &found);
    return found != nullptr ? fs::path(entry.pw_dir) : fs::path("/");
}

// The host's identifier as one path component.
std::string hostFolder() {
    std::string name = Bundle::main().identifier();
    std::replace_if(
        name.begin(), name.end(), [](char c) { return c == '/' || c == '\0'; }, '_');
    if (name.empty() || name.front() == '.') name.insert(0, 1, '_');
    return name;
}

fs::path hostDirectory(const char* variable, const char* belowHome) {
    fs::path base = absoluteFromEnvironment(variable);
    if (base.empty()) base = home() / belowHome;
    return base / hostFolder();
}

}  // namespace

fs::path UserDirectories::data() { return hostDirectory("XDG_DATA_HOME", ".local/share"); }

fs::path UserDirectories::state() { return hostDirectory("XDG_STATE_HOME", ".local/state"); }

fs::path UserDirectories::documents() { return data() / "Documents"; }

std::error_code makePrivateDirectory(const fs::path& directory) {
    const auto failure = [] { return std::error_code(errno, std::generic_category()); };
    fs::path made;
    for (const fs::path& component : directory) {
        made /= component;
        if (::mkdir(made.c_str(), S_IRWXU) == 0 ? !syncDirectory(made / "..") : errno != EEXIST)
            return failure();
    }
    struct stat status {};
    if (::stat(directory.c_str(), &status) != 0) return failure();
    if ((status.st_mode & (S_IRWXG | S_IRWXO)) != 0 && ::chmod(directory.c_str(), S_IRWXU) != 0)
        return failure();
    return {};
}

bool syncDirectory(const fs::path& directory) {
    const int opened = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (opened < 0) return false;
    const bool isSynced = ::fsync(opened) == 0;
    const int error = errno;
    ::close(opened);
    errno = error;
    return isSynced;
}

}  // namespace torvel
