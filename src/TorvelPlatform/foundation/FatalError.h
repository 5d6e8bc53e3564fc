#pragma once

#include <string_view>

namespace torvel {

// Stops the process because of a programming or deployment fault: the handler runs first (the default one
// writes "Fatal error: <message>" and a line feed to standard error), then std::abort.
[[noreturn]] void fatalError(std::string_view message);

// Replaces the process-wide handler; nullptr restores the default. A handler may leave by an exception or a
// long jump, which is how tests and fuzzers survive a stop. Any thread.
using FatalErrorHandler = void (*)(std::string_view message);
void setFatalErrorHandler(FatalErrorHandler handler);

}  // namespace torvel
