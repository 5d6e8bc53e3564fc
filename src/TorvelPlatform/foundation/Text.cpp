#include "TorvelPlatform/foundation/Text.h"

namespace torvel {

std::string removingOccurrences(std::string_view text, std::string_view part) {
    std::string rest;
    rest.reserve(text.size());
    std::size_t start = 0;
    if (!part.empty())
        for (std::size_t found; (found = text.find(part, start)) != text.npos; start = found + part.size())
            rest.append(text, start, found - start);
    return rest.append(text, start);
}

}  // namespace torvel
