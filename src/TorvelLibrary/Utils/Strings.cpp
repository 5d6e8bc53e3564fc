#include "TorvelLibrary/Utils/Strings.h"

#include "TorvelPlatform/foundation/Characters.h"
#include "TorvelPlatform/foundation/Text.h"

#include <algorithm>

namespace torvel {

std::string String::format(std::initializer_list<std::string_view> strings, std::string_view withSeparator) {
    std::string joined;
    std::string_view separator;  // none before the first
    for (const std::string_view text : strings) {
        joined.append(separator).append(text);
        separator = withSeparator;
    }
    return joined;
}

std::string getFirstCharacters(std::string_view text) {
    std::string initials;
    while (!text.empty()) {
        const std::string_view part = text.substr(0, text.find(' '));
        initials += part.substr(0, characterPrefix(part, 1).length);
        text.remove_prefix(std::min(part.size() + 1, text.size()));
    }
    return uppercased(initials);
}

std::string filterCharacters(std::string_view text, const ScalarFilter& unicodeScalarsFilter) {
    std::string kept;
    for (const std::string_view character : characters(text))
        if (std::ranges::all_of(unicodeScalars(character), unicodeScalarsFilter)) kept += character;
    return kept;
}

std::string filterCharacters(std::string_view text, const std::vector<CharacterSet>& definedIn,
                             const ScalarSetFilter& unicodeScalarsFilter) {
    if (definedIn.empty()) return std::string(text);
    CharacterSet charSet = definedIn.front();
    for (const CharacterSet& other : definedIn) charSet = charSet.unionWith(other);
    return filterCharacters(text, [&](char32_t scalar) { return unicodeScalarsFilter(charSet, scalar); });
}

std::string onlyCharacters(std::string_view text, const std::vector<CharacterSet>& charSets) {
    return filterCharacters(text, charSets, &CharacterSet::contains);
}

std::string onlyNumbers(std::string_view text, const CharacterSet& charSet) {
    return onlyCharacters(text, {charSet});
}

std::string getConfigValue(std::string_view key, const Bundle& targetBundle, std::string_view table) {
    return targetBundle.localizedString(key, key, table);
}

}  // namespace torvel
