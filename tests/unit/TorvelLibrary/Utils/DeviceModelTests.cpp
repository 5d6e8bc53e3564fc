#include "TorvelLibrary/Utils/DeviceModel.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

// Where generations share a family, the numbers next to each other; what is close to a key but none.
TEST(DeviceModel, Names) {
    const struct {
        const char *identifier, *name;
    } rows[] = {
        {"iPod5,1", "iPod Touch 5"},     {"iPod7,1", "iPod Touch 6"},
        {"ipod7,1", "ipod7,1"},          {"iPhone5,2", "iPhone 5"},
        {"iPhone5,3", "iPhone 5c"},      {"iPhone7,1", "iPhone 6 Plus"},
        {"iPhone9,4", "iPhone 7 Plus"},  {"iPhone10,5", "iPhone 8 Plus"},
        {"iPhone10,6", "iPhone X"},      {"iPhone11,6", "iPhone XS Max"},
        {"iPhone11,8", "iPhone XR"},     {"iPhone12,8", "iPhone SE 2nd Gen"},
        {"iPhone14,2", "iPhone 13 Pro"}, {"iPhone14,5", "iPhone 13"},
        {"iPad2,5", "iPad Mini"},        {"iPad3,4", "iPad 4"},
        {"iPad4,7", "iPad Mini 3"},      {"iPad5,3", "iPad Air 2"},
        {"iPad6,12", "iPad 5"},          {"iPad7,1", "iPad Pro (12.9-inch) (2nd generation)"},
        {"iPad7,6", "iPad 6"},           {"iPad8,5", "iPad Pro (12.9-inch) (3rd generation)"},
        {"AppleTV5,3", "Apple TV"},      {"iPhone99,1", "iPhone99,1"},
        {"iPhone3,3 ", "iPhone3,3 "},    {"", ""},
    };
    for (const auto& row : rows) {
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
