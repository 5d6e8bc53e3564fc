#include "Fuzz.h"
#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"

void fuzz(std::string_view bytes) {
    const auto json = torvel::JSON::parse(bytes);
    if (!json) return mustHold(!json.error().description.empty());
    const auto record = torvel::APITimeError::decode(json.value());
    if (!record) mustHold(!record.error().description.empty());
    const auto written = torvel::prettyPrintedJSON({{"member", bytes}});
    mustHold(written && torvel::JSON::parse(*written).value().member("member")->string() == bytes);
}
