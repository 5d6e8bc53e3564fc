#pragma once

#include <string>
#include <string_view>

// The tool's two channels. Results alone go to standard output; what the library itself prints there (its
// log, the cipher's fixed lines) is sent to standard error, with the tool's own messages.
namespace torvel::cli {

// Keeps standard output for results and turns everything else written to it to standard error. First thing
// in main.
void claimStandardOutput();

// Writes to standard output, at once. False when it cannot be written.
bool writeResult(std::string_view text);
// Writes a command's whole result, with a line end added on a terminal, and gives the exit code; a failure is
// told on standard error.
int deliver(std::string_view result);

bool resultsOnTerminal();

// The text with question marks for control characters, which may come with a user's text or a file.
std::string printable(std::string text);

// One line on standard error, "torvel COMMAND: message" ("torvel: message" without a command), printable.
void complain(std::string_view command, std::string message);

// A line of text with a bar for a fraction from 0 to 1.
std::string progressBar(double fraction);

// A bar on standard error, redrawn in place; nothing at all where that is no terminal.
class Progress {
  public:
    explicit Progress(std::string label = "");  // stands before the bar
    ~Progress() { clear(); }
    void show(double fraction);
    void clear();

  private:
    std::string m_label;
    bool m_terminal;
    bool m_shown = false;
};

}  // namespace torvel::cli
