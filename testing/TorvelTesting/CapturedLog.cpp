#include "TorvelTesting/CapturedLog.h"

#include "TorvelLibrary/Utils/LogUtils.h"

#include <array>

#include <unistd.h>

namespace torvel::testing {

CapturedLog::CapturedLog()
    : m_output(::dup(STDOUT_FILENO)), m_file(std::tmpfile()), m_dateFormat(LogUtils::dateFormat()) {
    std::fflush(stdout);
    ::dup2(::fileno(m_file), STDOUT_FILENO);
    LogUtils::setDateFormat("");
    LogUtils::setLoggingEnabled(true);
}

CapturedLog::~CapturedLog() {
    LogUtils::setLoggingEnabled(false);
    LogUtils::setDateFormat(m_dateFormat);
    std::fflush(stdout);
    ::dup2(m_output, STDOUT_FILENO);
    ::close(m_output);
    std::fclose(m_file);
}

std::string CapturedLog::text() const {
    std::fflush(stdout);
    std::string all;
    std::array<char, 4096> part;
    const int file = ::fileno(m_file);
    for (ssize_t count = 0;
         (count = ::pread(file, part.data(), part.size(), static_cast<off_t>(all.size()))) > 0;)
        all.append(part.data(), static_cast<std::size_t>(count));
    return all;
}

}  // namespace torvel::testing
