// Runs a target over the files of a corpus folder, and over every cut of each: what the ordinary tests do,
// where no fuzzing engine is.
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

int main(int count, char** arguments) {
    if (count != 2 || !std::filesystem::is_directory(arguments[1])) {
        std::cerr << "Usage: " << arguments[0] << " CORPUS\n";
        return 2;
    }
    int files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(arguments[1])) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::string bytes{std::istreambuf_iterator<char>(file), {}};
        constexpr std::size_t mostCuts = 512;
        const std::size_t step = bytes.size() / mostCuts + 1;
        for (std::size_t size = bytes.size() % step; size <= bytes.size(); size += step)
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), size);
        ++files;
    }
    std::cerr << files << " files replayed\n";
    return files > 0 ? 0 : 1;
}
