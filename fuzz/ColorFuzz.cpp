#include "Fuzz.h"
#include "TorvelLibrary/Utils/ColorDAO.h"
#include "TorvelPlatform/uikit/ColorSet.h"

using namespace torvel;

// A colour's text, which is a colour set and a colour theme as well.
void fuzz(std::string_view bytes) {
    const UIColor color = UIColor::hexString(bytes);
    mustHold(color == color && color.components()->alpha == 1);

    for (const auto style : {ScreenEnvironment::Style::light, ScreenEnvironment::Style::dark})
        if (const auto named = colorOfSet(bytes, style)) mustHold(*named == *named);

    const auto list = PropertyList::parse(Data(bytes));
    if (const auto theme = list ? ColorDAO::from(list.value()) : PropertyListError{})
        for (const ColorDAO::Field& field : ColorDAO::fields())
            UIColor::hexString(theme.value().*field.color);
}
