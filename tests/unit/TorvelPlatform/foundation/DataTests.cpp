#include "TorvelPlatform/foundation/Data.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

TEST(Data, TextIsAbsentWhenBytesAreNotUTF8) {
    const struct {
        const char* name;
        std::string bytes;
        bool valid;
    } rows[] = {
        {"empty", "", true},
        {"three-byte character", "\xE2\x82\xAC", true},
        {"lone continuation", "a\x80", false},
        {"overlong slash", "\xC0\xAF", false},
        {"surrogate half", "\xED\xA0\x80", false},
        {"cut character", "\xF0\x9F\x98", false},
    };
    for (const auto& row : rows) EXPECT_EQ(Data(row.bytes).utf8Text().has_value(), row.valid) << row.name;
}

}  // namespace
}  // namespace torvel
