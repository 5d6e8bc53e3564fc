#include "TorvelLibrary/Utils/TextBounds.h"
#include "TorvelPlatform/uikit/qt/Fonts.h"

#include <QFont>
#include <QFontInfo>

#include <gtest/gtest.h>

namespace torvel {
namespace {

TEST(Fonts, AreFoundByTheirExactNameAlone) {
    EXPECT_EQ(fontWithName("TorvelBox-SemiBold", 17.664), UIFont("TorvelBox-SemiBold", 17.664));
    for (const char* name : {"TorvelBox", "torvelbox-semibold", "TorvelBox-Black", "Torvel Box", "", "*"})
        EXPECT_FALSE(fontWithName(name, 17)) << name;
    EXPECT_EQ(systemFontOfSize(12), UIFont("DejaVuSans", 12));
    EXPECT_EQ(QFontInfo(toQFont(UIFont("TorvelBox-SemiBold", 20))).styleName(), "SemiBold");
    EXPECT_EQ(QFontInfo(toQFont(UIFont("TorvelBox-SemiBold", 20))).pixelSize(), 20);
    EXPECT_EQ(QFontInfo(toQFont(UIFont("TorvelBox-Black", 20))).family(), "DejaVu Sans");
    EXPECT_FALSE(registerFont("/dev/null"));
}

// The boxes of the face are 0.6 of its size wide; a line is 1.4 high, with a gap of 0.1 to the next.
TEST(TextBounds, AreExactAndProportional) {
    const struct {
        const char *name, *text;
        double size, limit, width, lines;
    } rows[] = {{"fraction", "abcdefghij", 17.664, 0, 6, 1},
                {"another fraction", "abcdefghij", 17.3, 0, 6, 1},
                {"tiny", "abcdefghij", 0.1, 0, 6, 1},
                {"words", "aaaa bbbb cccc", 20, 20 * 0.6 * 9.5, 5.4, 2},
                {"words stay whole", "aaaa bbbb cccc", 20, 20 * 0.6 * 7.5, 2.4, 3},
                {"just fits", "aaaa bbbb", 20, 20 * 0.6 * 9, 5.4, 1},
                {"long word", "abcdefghij", 20, 20 * 0.6 * 4.2, 2.4, 3},
                {"narrower than a box", "abc", 20, 1, 0.6, 3},
                {"line feeds", "a\nbbb\n\nc", 20, 0, 1.8, 4},
                {"ends with one", "a\n", 20, 0, 0.6, 2},
                {"empty", "", 20, 0, 0, 1},
                {"empty, limited", "", 20, 50, 0, 1},
                {"no size", "abc", 0, 0, 0, 0},
                {"no mnemonics", "a&b", 20, 0, 1.8, 1},
                {"limit of no use", "aa bb", 20, -3, 3, 1}};
    for (const auto& row : rows) {
        const UIFont font("TorvelBox-Regular", row.size);
        EXPECT_NEAR(boundingSize(row.text, font, row.limit).width, row.size * row.width, 1e-9) << row.name;
        const double high = row.lines > 0 ? row.lines * 1.4 + (row.lines - 1) * 0.1 : 0;
        EXPECT_NEAR(height(row.text, row.limit, font), row.size * high, 1e-9) << row.name;
    }
    EXPECT_NEAR(width(std::string(100'000, 'a'), 0, UIFont("TorvelBox-Regular", 10)), 600'000, 200);
}

}  // namespace
}  // namespace torvel
