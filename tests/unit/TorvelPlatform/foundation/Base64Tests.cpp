#include "TorvelPlatform/foundation/Base64.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

// The first seven rows are RFC 4648, section 10.
TEST(Base64, ReadsAndWrites) {
    const struct {
        std::string bytes, text;
    } rows[] = {
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"\xFB\xEF\xFF", "++//"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Base64::encode(Data(row.bytes).bytes()), row.text);
        EXPECT_EQ(Base64::decode(row.text), Data(row.bytes)) << row.text;
    }
}

TEST(Base64, AcceptsStrayTrailingBitsAndNothingElse) {
    EXPECT_EQ(Base64::decode("Zh=="), Data("f"));
    EXPECT_EQ(Base64::decode("Zm9="), Data("fo"));
    for (const char* text : {"Z",        "Zg",      "Zg=",     "Zm9vZ",    "=",    "====",   "Z===",
                             "Zg==Zg==", "Zm=v",    "=m9v",    "Zm9v====", "Zm 9", "Zm9v\n", "Zm9-",
                             "Zm9_",     "Zm9\x80", "Zm9\xC3", "@m9v",     "[m9v", "`m9v",   "{m9v"})
        EXPECT_FALSE(Base64::decode(text)) << text;
    EXPECT_FALSE(Base64::decode(std::string_view("Zm9\0", 4)));
}

}  // namespace
}  // namespace torvel
