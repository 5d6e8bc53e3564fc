#include "BenchFiles.h"

#include "Bench.h"

#include <cstdlib>
#include <fstream>

namespace torvel::bench {

Folder::Folder() {
    std::string name = (std::filesystem::temp_directory_path() / "torvel-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) giveUp("no folder for temporary files");
    m_path = name;
}

Folder::~Folder() {
    std::error_code error;
    std::filesystem::remove_all(m_path, error);
}

void Folder::write(const std::string& name, std::string_view content) const {
    std::filesystem::create_directories((m_path / name).parent_path());
    std::ofstream(m_path / name, std::ios::binary) << content;
}

}  // namespace torvel::bench
