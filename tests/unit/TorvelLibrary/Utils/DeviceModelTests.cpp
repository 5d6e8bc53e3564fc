#include "TorvelLibrary/Utils/DeviceModel.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

// Where generations share a family, the numbers next to each other; what is close to a key but none.
TEST(DeviceModel, Names) {
    const struct {
        const char *identifier, *name;
    } rows[] = {
        {"iPod7,1", "iPod Touch 6"},  {"ipod7,1", "ipod7,1"},          {"iPhone5,2", "iPhone 5"},
        {"iPhone5,3", "iPhone 5c"},   {"iPhone10,5", "iPhone 8 Plus"}, {"iPhone10,6", "iPhone X"},
        {"iPad4,7", "iPad Mini 3"},   {"iPad5,3", "iPad Air 2"},       {"AppleTV5,3", "Apple TV"},
        {"iPhone99,1", "iPhone99,1"}, {"iPhone3,3 ", "iPhone3,3 "},    {"", ""},
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
