#include "TorvelLibrary/validation/ValidationHelper.h"
#include "TorvelTesting/HostFixture.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

struct Validation : testing::HostFixture {
    Validation() { Bundle::setLibrary(directory()); }
};

TEST_F(Validation, EachOperationHasItsPattern) {
    addResource("Configurations.strings",
                "torvel_amount_regex = a; torvel_accountno_regex = n; torvel_mobileno_regex = m;"
                "torvel_username_regex = u;");
    for (const std::string text : {"a", "n", "m", "u", "x"}) {
        EXPECT_EQ(ValidationHelper::validateAmount(text), text == "a");
        EXPECT_EQ(ValidationHelper::validateAccountNo(text), text == "n");
        EXPECT_EQ(ValidationHelper::validateMobileNo(text), text == "m");
        EXPECT_EQ(ValidationHelper::validateUserName(text), text == "u");
    }
}

TEST_F(Validation, AnInvalidPatternIsLoggedAndMatchesNothing) {
    addResource("Configurations.strings", "torvel_amount_regex = \"[0-9\";");
    EXPECT_THAT(logOf([] {
                    EXPECT_FALSE(ValidationHelper::validateAmount("5"));
                    EXPECT_FALSE(ValidationHelper::validateAmount("[0-9"));
                }),
                ::testing::MatchesRegex(" \\[.*\\] ERROR\\[Predicate.cpp\\]:.* -> Invalid regular expression "
                                        "\"\\[0-9\": U_REGEX_[A-Z_]*\n"));
}

}  // namespace
}  // namespace torvel
