#include "cli/Output.h"

#include "cli/Command.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iostream>

#include <fcntl.h>
#include <unistd.h>

namespace torvel::cli {
namespace {

int resultsChannel = STDOUT_FILENO;

}  // namespace

void claimStandardOutput() {
    const int kept = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    resultsChannel = kept;  // a closed standard output stays closed: writing fails and is told
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
}

bool writeResult(std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(resultsChannel, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

int deliver(std::string_view result) {
    const bool wantsLineEnd = resultsOnTerminal() && !result.empty() && result.back() != '\n';
    if (writeResult(result) && (!wantsLineEnd || writeResult("\n"))) return exitOk;
    complain("", std::string("the result cannot be written: ") + std::strerror(errno));
    return exitFailed;
}

bool resultsOnTerminal() { return ::isatty(resultsChannel) == 1; }

std::string printable(std::string text) {
    const auto isControl = [](char c) { return (c >= 0 && c < ' ') || c == 127; };
    std::ranges::replace_if(text, isControl, '?');
    return text;
}

void complain(std::string_view command, std::string message) {
    std::cerr << "torvel" << (command.empty() ? "" : " ") << command << ": " << printable(std::move(message))
              << std::endl;
}

std::string progressBar(double fraction) {
    constexpr int width = 40;
    const int full = static_cast<int>(std::lround(fraction * width));
    char percent[8];
    std::snprintf(percent, sizeof percent, "%3d%%", static_cast<int>(fraction * 100));
    std::string bar = "[";
    for (int place = 0; place < width; ++place) bar += place < full ? '#' : '.';
    return bar + "] " + percent;
}

Progress::Progress(std::string label) : m_label(std::move(label)), m_terminal(::isatty(STDERR_FILENO) == 1) {}

void Progress::show(double fraction) {
    if (!m_terminal) return;
    m_shown = true;
    std::cerr << "\r" << m_label << progressBar(fraction) << std::flush;
}

void Progress::clear() {
    if (m_shown) std::cerr << "\r\033[K" << std::flush;
    m_shown = false;
}

}  // namespace torvel::cli
