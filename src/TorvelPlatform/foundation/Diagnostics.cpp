#include "TorvelPlatform/foundation/Diagnostics.h"

#include <atomic>

namespace torvel {
namespace {

std::atomic<DiagnosticSink> currentSink{nullptr};

}  // namespace

void setDiagnosticSink(DiagnosticSink sink) { currentSink = sink; }

void reportDiagnostic(std::string_view message, const std::source_location& where) {
    if (const DiagnosticSink sink = currentSink.load()) sink(message, where);
}

}  // namespace torvel
