#include "TorvelPlatform/foundation/JSON.h"

#include "TorvelPlatform/foundation/Data.h"

#include <simdjson.h>

namespace torvel {

struct JSON::Document {
    simdjson::dom::document tape;
};
