#include "TorvelPlatform/foundation/FatalError.h"

#include <atomic>
#include <cstdlib>
#include <iostream>

namespace torvel {
namespace {

void reportOnStandardError(std::string_view message) { std::cerr << "Fatal error: " << message << std::endl; }

std::atomic<FatalErrorHandler> currentHandler{&reportOnStandardError};

}  // namespace

void fatalError(std::string_view message) {
    currentHandler.load()(message);
    std::abort();
}

void setFatalErrorHandler(FatalErrorHandler handler) {
    currentHandler = handler != nullptr ? handler : &reportOnStandardError;
}

}  // namespace torvel
