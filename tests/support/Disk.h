#pragma once

#include <filesystem>
#include <map>
#include <random>
#include <string>
#include <vector>

namespace torvel::testing {

// Stands between this process, SQLite included, and the C library's calls that change files: tells what was
// done below a folder and has single calls fail.
class DiskRecorder {
  public:
    explicit DiskRecorder(const std::filesystem::path& root);
    ~DiskRecorder();

    struct Event {
        enum Kind { wrote, cut, synced, lostSync, renamed, removed, acknowledged } kind;
        std::string path = {}, target = {};
        std::size_t at = 0;
        std::string bytes = {};
    };
    std::vector<Event> events;
    void acknowledge() { events.push_back({Event::acknowledged}); }

    // The error that the call of a number gives, counted from 0; when short, half is written before and the
    // next call of that kind fails.
    void fail(int call, int error, bool isShort);
    int calls() const { return m_calls; }

    // For the calls that stand in: whether a call is to fail, and how much of a write goes through.
    bool isTold(const std::string& path) const { return path.starts_with(m_root); }
    int errorOfNext(std::size_t* length);

  private:
    std::string m_root;
    int m_calls = 0, m_failing = -1, m_error = 0;
    bool m_isShort = false;
};

// What a disk holds: all that was synced, and what was not as chance has it. A file's name is only safe once
// its folder was synced; what a failed sync let go of is lost until it is written again.
class Disk {
  public:
    using Files = std::map<std::string, std::string>;
    void take(const DiskRecorder::Event& event);

    // After a loss of power that keeps nothing, everything, or any sectors of what was not synced and the
    // first few of the changes of names.
    enum Kept { nothing, everything, some };
    Files afterPowerLoss(Kept kept, std::mt19937& random) const;
    // Has the folder hold these files and no other.
    static void restore(const std::filesystem::path& root, const Files& files);

  private:
    struct Write {
        std::size_t at;
        std::string bytes;
        bool cuts;
    };
    struct File {
        std::string safe;
        std::vector<Write> pending;
    };
    struct Naming {
        std::string path;
        int file;  // -1: none any longer
    };
    static void apply(std::string& content, const Write& write);
    int fileAt(const std::string& path);

    std::vector<File> m_files;
    std::map<std::string, int> m_names, m_safeNames;
    std::vector<Naming> m_namings;  // not safe yet
};

}  // namespace torvel::testing
