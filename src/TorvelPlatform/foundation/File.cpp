#include "TorvelPlatform/foundation/File.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace torvel {

Outcome<Data, FileError> readFile(const std::string& path) {
    const auto failure = [&path] {
        return FileError{"The file \"" + path + "\" could not be read: " + std::strerror(errno) + "."};
    };
    const std::unique_ptr<std::FILE, decltype([](std::FILE* file) { std::fclose(file); })> file(
        std::fopen(path.c_str(), "rb"));
    if (!file) return failure();

    std::string bytes;
    std::size_t used = 0;
    do {
        bytes.resize(std::max<std::size_t>(2 * bytes.size(), 16 * 1024));
        used += std::fread(bytes.data() + used, 1, bytes.size() - used, file.get());
    } while (used == bytes.size());
    if (std::ferror(file.get()) != 0) return failure();  // a directory, say
    bytes.resize(used);
    return Data(std::move(bytes));
}

}  // namespace torvel
