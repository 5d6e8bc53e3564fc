#pragma once

#include <source_location>
#include <string_view>

namespace torvel {

// Where platform rooms report faults in resources and data that no return value can carry. The library
// above connects it to its log as error lines; without a sink nothing happens.
using DiagnosticSink = void (*)(std::string_view message, const std::source_location& where);

// Any thread. The sink is called on the thread that reports.
void setDiagnosticSink(DiagnosticSink sink);
void reportDiagnostic(std::string_view message,
                      const std::source_location& where = std::source_location::current());

}  // namespace torvel
