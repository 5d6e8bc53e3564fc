#pragma once

#include <filesystem>
#include <system_error>

namespace torvel {

// The host's own folders in its user's home (XDG base directories), named after the identifier of the main
// bundle. Nothing is made here. A base that is unset, empty or not absolute is replaced by its default. Any
// thread.
struct UserDirectories {
    // $XDG_DATA_HOME/<host>, else ~/.local/share/<host>: what a backup of the user's data takes along.
    static std::filesystem::path data();
    // $XDG_STATE_HOME/<host>, else ~/.local/state/<host>: what stays on this machine.
    static std::filesystem::path state();
    // The host's documents, in its data folder.
    static std::filesystem::path documents();
};

// Makes a directory, and its parents where they are missing, for the user alone (0700). One that is there and
// belongs to the user loses what it granted to others. Durable; the system's reason when that failed.
std::error_code makePrivateDirectory(const std::filesystem::path& directory);

// Forces the names in a directory to disk; false, with errno set, when that failed.
bool syncDirectory(const std::filesystem::path& directory);

}  // namespace torvel
