#pragma once

#include <string>

namespace torvel {

// The marketing name of the device, such as "iPod Touch 5", by the model identifier in the environment
// variable SIMULATOR_MODEL_IDENTIFIER ("iPod5,1"); the identifier itself when it is unknown. Compared
// exactly, case too. Stops the process when the variable is missing: this flavour of the library runs in the
// simulator alone. Any thread.
std::string modelName();

}  // namespace torvel
