#include "TorvelPlatform/foundation/FatalError.h"
#include "cli/Command.h"
#include "cli/Output.h"

#include <algorithm>

#include <unistd.h>

namespace torvel::cli {
namespace {

const Command* const commands[] = {
    &demoCommand,   &serveCommand,    &callCommand,  &sealCommand,   &openCommand, &cardCommand,
    &amountCommand, &validateCommand, &storeCommand, &doctorCommand, &pinsCommand,
};

std::string toolHelp() {
    std::string page =
        "Usage: torvel COMMAND [ARGUMENT]...\n"
        "Encrypted, pinned requests of the Torvel library, from the command line.\n\n";
    for (const Command* command : commands) {
        std::string name(command->name);
        name.resize(10, ' ');
        page += "  " + name + std::string(command->summary) + "\n";
    }
    return page +
           "\ntorvel COMMAND --help tells more; torvel --version names the version.\n"
           "Exit codes: 0 ok, 1 the operation failed, 2 the command line is wrong.\n";
}

int misused(const std::string& message) {
    complain("", message + " (see torvel --help)");
    return exitUsage;
}

int run(const Command& command, std::span<char* const> words) {
    const auto arguments = Arguments::parse(command.name, command.options, words);
    if (!arguments) return exitUsage;
    if (arguments->has("--help"))
        return deliver(helpPage(command.name, command.summary, command.details, command.options));
    return command.run(*arguments);
}

int run(std::span<char* const> words) {
    if (words.empty()) return misused("which command?");
    const std::string_view first = words.front();
    if (first == "--help" || first == "-h") return deliver(toolHelp());
    if (first == "--version") return deliver("torvel " TORVEL_VERSION "\n");
    const auto command = std::ranges::find(commands, first, &Command::name);
    if (command == std::end(commands)) return misused("there is no command '" + std::string(first) + "'");
    return run(**command, words.subspan(1));
}

// What a server sends may stop the library (an answer in an envelope that is none, say). For a tool that is a
// failed operation like any other, not a crash.
[[noreturn]] void endOnFatalError(std::string_view message) {
    complain("", "the library stopped: " + std::string(message));
    ::_exit(exitFailed);
}

}  // namespace
}  // namespace torvel::cli

int main(int count, char** words) {
    torvel::cli::claimStandardOutput();
    torvel::setFatalErrorHandler(torvel::cli::endOnFatalError);
    return torvel::cli::run({words + 1, words + count});
}
