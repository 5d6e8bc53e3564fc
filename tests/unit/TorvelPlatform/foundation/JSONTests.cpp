#include "TorvelPlatform/foundation/JSON.h"

#include <gtest/gtest.h>

namespace torvel {
namespace {

// Verdicts as python3's json.loads, but for the bytes that RFC 8259 leaves to the parser.
TEST(JSON, WholeDocumentsAreValidated) {
    const struct {
        const char* name;
        std::string text;
        bool valid;
    } rows[] = {
        {"empty", "", false},
        {"number", " -1.5e+3 ", true},
        {"integer beyond a word", "{\"id\":123456789012345678901234567890}", true},
        {"number beyond a double", "[1e999,-1E+400]", true},
        {"broken number after a large one", "[1e999, 1.]", false},
        {"leading zero after a large one", "[1e999, 012]", false},
        {"numbers in texts stay", "{\"1e999\":\"1e999\\\"2\",\"n\":1e999}", true},
        {"bare minus", "-", false},
        {"cut string", "[1e999,\"a", false},
        {"not UTF-8", "\"\xff\"", false},
        {"byte order mark", "\xEF\xBB\xBF{}", true},
        {"1000 levels", std::string(1000, '[') + std::string(1000, ']'), true},
        {"a million levels", std::string(1000000, '['), false},
    };
    EXPECT_FALSE(JSON::parse({}).ok());
    for (const auto& row : rows) {
        const auto json = JSON::parse(row.text);
        EXPECT_EQ(json.ok(), row.valid) << row.name;
        if (json) continue;
        EXPECT_TRUE(json.error().description.starts_with("The data is not valid JSON: ")) << row.name;
    }
}

TEST(JSON, MembersAndTexts) {
    std::optional<JSON> member;
    {
        const JSON root =
            JSON::parse(R"({"a":"x","n":null,"o":{"a":"\u20ac\/\n"},"a":"last","i":1e999})").value();
        EXPECT_TRUE(root.isObject());
        EXPECT_EQ(root.member("a")->string(), "last");
        EXPECT_TRUE(root.member("n")->isNull());
        EXPECT_FALSE(root.member("n")->string());
        EXPECT_FALSE(root.member("i")->string());
        EXPECT_FALSE(root.member("b"));
        EXPECT_FALSE(root.string());
        EXPECT_FALSE(root.member("a")->member("a"));
        member = root.member("o")->member("a");
    }
    EXPECT_EQ(member->string(), "\u20ac/\n");  // its document lives on with it
}

TEST(JSON, PrettyPrintedAsThePlatformsWriter) {
    EXPECT_EQ(prettyPrintedJSON({{"RequestKey", "a/b"}, {"RequestData", "+="}}),
              "{\n  \"RequestKey\" : \"a\\/b\",\n  \"RequestData\" : \"+=\"\n}");
    EXPECT_EQ(prettyPrintedJSON({{"k\n", "\"\\\b\f\r\t\x01\x1f\x7f\u20ac"}}),
              "{\n  \"k\\n\" : \"\\\"\\\\\\b\\f\\r\\t\\u0001\\u001f\x7f\u20ac\"\n}");
    EXPECT_EQ(prettyPrintedJSON({}), "{\n\n}");
    EXPECT_FALSE(prettyPrintedJSON({{"a", "\xff"}}));
    EXPECT_FALSE(prettyPrintedJSON({{"\xff", "a"}}));
}

TEST(JSON, WrittenTextsReadBack) {
    std::string text;
    for (int i = 0; i < 5000; ++i) text += static_cast<char>(i * i % 127 + 1);
    for (const std::size_t length : {0, 1, 15, 16, 17, 31, 33, 4999}) {
        const std::string_view part = std::string_view(text).substr(text.size() - length);
        const JSON json = JSON::parse(*prettyPrintedJSON({{"a", part}, {part, "b"}})).value();
        EXPECT_EQ(json.member("a")->string(), part);
        EXPECT_EQ(json.member(part)->string(), "b");
    }
}

}  // namespace
}  // namespace torvel
