#pragma once

#include <cstdio>
#include <string>

namespace torvel::testing {

// Enables the library's log, without its dates, and keeps what it writes instead of showing it. What the
// process itself writes to standard output meanwhile is kept too. One at a time.
class CapturedLog {
  public:
    CapturedLog();
    // Disables the log and gives standard output back.
    ~CapturedLog();
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    // All that was written up to now.
    std::string text() const;

  private:
    int m_output;  // where standard output went before
    std::FILE* m_file;
    std::string m_dateFormat;
};

}  // namespace torvel::testing
