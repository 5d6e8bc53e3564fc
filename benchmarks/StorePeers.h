#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace torvel::bench {

// A block of 4 KiB that is written over and forced to disk: the least that a durable write costs.
class RawFile {
  public:
    explicit RawFile(const std::filesystem::path& file);
    ~RawFile();
    void overwrite();

  private:
    int m_file;
};

struct Peer {
    std::string name;
    double goal;                                                                // its time over ours
    std::function<void(const std::string& key, const std::string& value)> put;  // durable when it returns
};
std::vector<Peer> otherStores(const std::filesystem::path& folder);

std::filesystem::path databaseOf(const std::string& suite);

// SQLite as a careful user sets it up, with values that XChaCha20-Poly1305 has sealed; it keeps no promise
// beyond.
class BareEngine {
  public:
    explicit BareEngine(const std::filesystem::path& file);
    ~BareEngine();
    void fill(std::size_t keys);
    void put(std::size_t key, const std::string& value);  // over one that is there; durable when it returns
    std::size_t read(std::size_t key);                    // one prepared SELECT and one opening
    // The same of a store of ours, under a key that is not its own: as much work, to no avail.
    std::size_t readAny();

  private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

}  // namespace torvel::bench
