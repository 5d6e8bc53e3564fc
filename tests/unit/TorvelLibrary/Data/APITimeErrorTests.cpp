#include "TorvelLibrary/Data/Remote/Networking/APITimeError.h"

#include <gmock/gmock.h>

namespace torvel {
namespace {

TEST(APITimeError, DecodesTheShortNamesOnly) {
    const struct {
        const char* json;
        const char* fault;  // nullptr: decodes
    } rows[] = {
        {R"({"message":"m","errorCode":"E1"})", nullptr},
        {R"({"message":"m","errorCode":"E1","receivedResponse":null})", nullptr},
        {R"({"message":"m","errorCode":42})", "\"errorCode\" is not a string"},
        {R"({"errorCode":"E1"})", "\"message\" is missing"},
        {R"({"localizedDescription":"m","errorCodeInResponse":"E1"})", "\"message\" is missing"},
        {R"({"message":"m","errorCode":"E1","receivedResponse":"%"})", "\"receivedResponse\""},
        {R"([])", "not an object"},
    };
    for (const auto& row : rows) {
        const auto record = APITimeError::decode(JSON::parse(row.json).value());
        ASSERT_EQ(record.ok(), row.fault == nullptr) << row.json;
        if (row.fault != nullptr) {
            EXPECT_THAT(record.error().description, ::testing::HasSubstr(row.fault));
            continue;
        }
        EXPECT_EQ(record.value().localizedDescription(), "m");
        EXPECT_EQ(record.value().errorCodeInResponse(), "E1");
        EXPECT_FALSE(record.value().receivedDataInResponse().has_value());
    }
    const auto record = APITimeError::decode(
        JSON::parse(R"({"message":"","errorCode":"","receivedResponse":"YWI="})").value());
    EXPECT_EQ(record.value().receivedDataInResponse(), Data("ab"));
}

}  // namespace
}  // namespace torvel
