#pragma once  // internal

#include <filesystem>
#include <optional>
#include <string_view>

namespace torvel {

// A file in the host's Documents directory; absent when the name is not a single path component.
std::optional<std::filesystem::path> documentFile(std::string_view name);

}  // namespace torvel
