#include "cli/Command.h"

namespace torvel::cli {
namespace {

int demo(const Arguments& arguments) { return arguments.failed("not there yet"); }

}  // namespace

const Command demoCommand = {"demo", "a walk through the library against its own backend", "", {}, demo};

}  // namespace torvel::cli
