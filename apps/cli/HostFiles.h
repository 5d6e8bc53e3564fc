#pragma once

#include "TorvelPlatform/foundation/File.h"

#include <filesystem>
#include <optional>
#include <string>

// What a user hands the tool by name. The library takes a fault in such a file for one of the deployment and
// stops; the tool looks first and says what is wrong.
namespace torvel::cli {

// The bytes that an argument stands for: "-" is standard input, "@FILE" a file, all else itself.
Outcome<Data, FileError> readInput(const std::string& argument);

// Why a file cannot pin a server, or cannot seal keys for it; absent when it can.
std::optional<std::string> certificateFault(const std::filesystem::path& derFile);
std::optional<std::string> encryptionCertificateFault(const std::filesystem::path& derFile);

}  // namespace torvel::cli
