#include "TorvelLibrary/Utils/ColorDAO.h"

namespace torvel {

std::span<const ColorDAO::Field> ColorDAO::fields() {
#define TORVEL_COLOR(NAME, KEY, FALLBACK) {KEY, FALLBACK, &ColorDAO::NAME},
    static constexpr Field all[] = {TORVEL_COLORS(TORVEL_COLOR)};
#undef TORVEL_COLOR
    return all;
}

Outcome<ColorDAO, PropertyListError> ColorDAO::from(const PropertyList& theme) {
    const PropertyList::Dictionary* const values = theme.dictionary();
    if (values == nullptr) return PropertyListError{"A colour theme is a dictionary at its root."};
    ColorDAO colors;
    for (const Field& field : fields()) {
        const auto value = values->find(field.key);
        if (value == values->end()) continue;
        const std::string* const text = value->second.string();
        if (text == nullptr)
            return PropertyListError{"The colour \"" + std::string(field.key) + "\" is not a string."};
        colors.*field.color = *text;
    }
    return colors;
}

}  // namespace torvel
