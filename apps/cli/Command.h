#pragma once

#include "cli/Options.h"

namespace torvel::cli {

// Exit codes that scripts can use.
enum Exit : int { exitOk = 0, exitFailed = 1, exitUsage = 2 };

// One command of the tool. Another one is a row here, a definition in a file of its own and a line in
// main.cpp.
struct Command {
    std::string_view name;
    std::string_view summary;  // one line, for the tool's help
    std::string_view details;  // what its own help adds; may be empty
    std::span<const Option> options;
    int (*run)(const Arguments& arguments);  // the exit code
};

extern const Command demoCommand;
extern const Command serveCommand;
extern const Command callCommand;
extern const Command sealCommand;
extern const Command openCommand;
extern const Command cardCommand;
extern const Command amountCommand;
extern const Command validateCommand;
extern const Command storeCommand;
extern const Command doctorCommand;
extern const Command pinsCommand;

}  // namespace torvel::cli
