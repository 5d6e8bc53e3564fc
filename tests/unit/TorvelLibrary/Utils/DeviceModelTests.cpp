#include "TorvelLibrary/Utils/DeviceModel.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

// A model of every line of the maker's list, and every boundary between two generations that share a family.
TEST(DeviceModel, Names) {
    struct Row {
        const char* identifier;
        const char* name;
    };
    const Row rows[] = {
        {"iPod5,1", "iPod Touch 5"},
        {"iPod7,1", "iPod Touch 6"},
        {"ipod7,1", "ipod7,1"},
        {"iPhone3,3", "iPhone 4"},
        {"iPhone4,1", "iPhone 4s"},
        {"iPhone5,2", "iPhone 5"},
        {"iPhone5,3", "iPhone 5c"},
        {"iPhone6,2", "iPhone 5s"},
        {"iPhone7,1", "iPhone 6 Plus"},
        {"iPhone7,2", "iPhone 6"},
        {"iPhone8,4", "iPhone SE"},
        {"iPhone9,3", "iPhone 7"},
        {"iPhone9,4", "iPhone 7 Plus"},
        {"iPhone10,4", "iPhone 8"},
        {"iPhone10,5", "iPhone 8 Plus"},
        {"iPhone10,6", "iPhone X"},
        {"iPhone11,2", "iPhone XS"},
        {"iPhone11,6", "iPhone XS Max"},
        {"iPhone11,8", "iPhone XR"},
        {"iPhone12,3", "iPhone 11 Pro"},
        {"iPhone12,8", "iPhone SE 2nd Gen"},
        {"iPhone13,1", "iPhone 12 Mini"},
        {"iPhone14,2", "iPhone 13 Pro"},
        {"iPhone14,5", "iPhone 13"},
        {"iPad2,4", "iPad 2"},
        {"iPad2,5", "iPad Mini"},
        {"iPad3,3", "iPad 3"},
        {"iPad3,4", "iPad 4"},
        {"iPad4,3", "iPad Air"},
        {"iPad4,6", "iPad Mini 2"},
        {"iPad4,7", "iPad Mini 3"},
        {"iPad5,2", "iPad Mini 4"},
        {"iPad5,3", "iPad Air 2"},
        {"iPad6,4", "iPad Pro 9.7 Inch"},
        {"iPad6,7", "iPad Pro 12.9 Inch"},
        {"iPad6,12", "iPad 5"},
        {"iPad7,1", "iPad Pro (12.9-inch) (2nd generation)"},
        {"iPad7,3", "iPad Pro (10.5-inch)"},
        {"iPad7,6", "iPad 6"},
        {"iPad8,4", "iPad Pro (11-inch)"},
        {"iPad8,5", "iPad Pro (12.9-inch) (3rd generation)"},
        {"AppleTV5,3", "Apple TV"},
        {"AppleTV6,2", "Apple TV 4K"},
        {"AudioAccessory1,1", "HomePod"},
        {"iPhone99,1", "iPhone99,1"},
        {"iPhone3,3 ", "iPhone3,3 "},
        {"", ""},
    };
    for (const Row& row : rows) {
        setenv("SIMULATOR_MODEL_IDENTIFIER", row.identifier, 1);
        EXPECT_EQ(modelName(), row.name);
    }
}

TEST(DeviceModelDeathTest, NeedsTheVariable) {
    unsetenv("SIMULATOR_MODEL_IDENTIFIER");
    EXPECT_DEATH(modelName(), "SIMULATOR_MODEL_IDENTIFIER");
}

}  // namespace
}  // namespace torvel
