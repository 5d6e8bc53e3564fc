#pragma once

#include <deque>
#include <functional>
#include <string>
#include <thread>

namespace torvel::gallery {

// Follows the process's standard output, where the library logs, and passes it on. One an application.
class LogTap {
  public:
    // `changed` is called on the main queue, which must not be drained once this is gone.
    explicit LogTap(std::function<void()> changed);
    ~LogTap();
    LogTap(const LogTap&) = delete;
    LogTap& operator=(const LogTap&) = delete;

    // The latest lines, the last one last. Main thread.
    const std::deque<std::string>& lines() const { return m_lines; }
    void clear() { m_lines.clear(); }

  private:
    void follow(int pipe);
    void take(std::string line);

    std::function<void()> m_changed;
    std::deque<std::string> m_lines;
    int m_output = -1;  // what standard output was
    std::jthread m_reader;
};

}  // namespace torvel::gallery
