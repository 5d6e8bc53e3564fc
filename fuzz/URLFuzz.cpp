#include "Fuzz.h"
#include "TorvelLibrary/Utils/Extenstions.h"
#include "TorvelPlatform/foundation/CharacterSet.h"
#include "TorvelPlatform/foundation/PercentEncoding.h"

using namespace torvel;

void fuzz(std::string_view bytes) {
    if (const auto encoded = addingPercentEncoding(bytes, CharacterSet::urlQueryAllowed()))
        mustHold(removingPercentEncoding(*encoded) == bytes);
    queryParameters(bytes);
    path(bytes);
    getURLDomain(bytes);
    const auto url = URL::parse(bytes);
    if (!url) return;
    mustHold(url->absoluteString() == bytes);
    if (const auto next = URL::parse("https://a.example/b/c?d")->resolving(bytes))
        mustHold(next->scheme().has_value());
    mustHold(URL::file(bytes).path().ends_with(bytes.substr(bytes.find_last_of('/') + 1)));
}
