#include "TorvelLibrary/Utils/LogUtils.h"

#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/foundation/Guarded.h"
#include "TorvelPlatform/foundation/WallClock.h"

#include <atomic>
#include <cstdio>

namespace torvel {
namespace {

std::atomic<bool> isLoggingEnabled{false};

Guarded<std::string>& currentDateFormat() {
    static auto* const format =
        new Guarded<std::string>("yyyy-MM-dd hh:mm:ssSSS");  // usable until the very end
    return *format;
}

std::string_view sourceFileName(std::string_view filePath) {
    return filePath.substr(filePath.find_last_of('/') + 1);  // npos + 1 is 0: the whole path
}

void logDiagnostic(std::string_view message, const std::source_location& where) {
    LogUtils::e(message, where);
}

// The platform's rooms know nothing of this log: it offers itself as the sink of their diagnostics.
[[maybe_unused]] const bool isDiagnosticSink = (setDiagnosticSink(logDiagnostic), true);

}  // namespace

void LogUtils::setLoggingEnabled(bool isEnabled) { isLoggingEnabled = isEnabled; }

std::string LogUtils::dateFormat() { return currentDateFormat().load(); }

void LogUtils::setDateFormat(std::string_view pattern) { currentDateFormat().store(std::string(pattern)); }

DateFormatter LogUtils::dateFormatter() { return DateFormatter(dateFormat()); }

// Everything is assembled before the flag is asked, as it always was: what it costs is part of each call.
std::string LogUtils::line(std::string_view tag, std::string_view text, const LogSite& site) {
    constexpr std::size_t date = 32, numbers = 32;
    const std::string_view file = sourceFileName(site.filename);
    std::string line;
    line.reserve(date + tag.size() + file.size() + numbers + site.funcName.size() + text.size());
    dateFormatter().append(line, WallClock::now());
    line.append(" ").append(tag).append("[").append(file).append("]:");
    line.append(std::to_string(site.line)).append(" ").append(std::to_string(site.column)).append(" ");
    line.append(site.funcName).append(" -> ").append(text);
    return line;
}

void LogUtils::write(std::string line) {
    if (!isLoggingEnabled.load(std::memory_order_relaxed)) return;
    line.push_back('\n');
    std::fwrite(line.data(), 1, line.size(), stdout);
    std::fflush(stdout);  // a fatal stop may follow at once
}

}  // namespace torvel
