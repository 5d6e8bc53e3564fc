#include "TorvelPlatform/defaults/PropertyCoding.h"

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using Array = PropertyValue::Array;
using Dictionary = PropertyValue::Dictionary;
using namespace std::string_literals;

constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t greatest = std::numeric_limits<std::int64_t>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();

// As the platform documents its typed readers and the numeric readings of texts.
TEST(PropertyValue, Conversions) {
    const struct {
        const char* name;
        PropertyValue value;
        std::int64_t integer;
        double number;
        bool boolean;
        std::optional<std::string> text;
    } rows[] = {
        {"text of digits", "12", 12, 12, true, "12"},
        {"digits, then letters", "12abc", 12, 12, true, "12abc"},
        {"empty text", "", 0, 0, false, ""},
        {"fraction in a text", "3.9", 3, 3.9, true, "3.9"},
        {"exponent in a text", "1e3", 1, 1000, true, "1e3"},
        {"sign and white space", " \t-7 ", -7, -7, true, " \t-7 "},
        {"plus", "+8", 8, 8, true, "+8"},
        {"two signs", "+-8", 0, 0, false, "+-8"},
        {"zeros first", "-001", -1, -1, true, "-001"},
        {"beyond 64 bits", "9223372036854775808", greatest, 0x1p63, true, "9223372036854775808"},
        {"below 64 bits", "-9223372036854775809", smallest, -0x1p63, true, "-9223372036854775809"},
        {"beyond a double", "-1e999", -1, -infinity, true, "-1e999"},
        {"too small for a double", "1e-999", 1, 0, true, "1e-999"},
        {"hexadecimal", "0x10", 0, 0, false, "0x10"},
        {"infinity in a text", "inf", 0, 0, false, "inf"},
        {"YES", "YES", 0, 0, true, "YES"},
        {"integer", -42, -42, -42, true, "-42"},
        {"true Boolean", true, 1, 0, true, "1"},
        {"false Boolean", false, 0, 0, false, "0"},
        {"double", 3.9, 3, 3.9, true, "3.9"},
        {"negative double", -3.9, -3, -3.9, true, "-3.9"},
        {"double of 16 digits", 0.1 + 0.2, 0, 0.1 + 0.2, true, "0.3"},
        {"large double", 1e300, greatest, 1e300, true, "1e+300"},
        {"float", 0.1F, 0, double{0.1F}, true, "0.1"},
        {"date", PropertyValue::Date{}, 0, 0, false, {}},
        {"data", Data("12"), 0, 0, false, {}},
        {"array", Array{1}, 0, 0, false, {}},
        {"dictionary", Dictionary{{"a", 1}}, 0, 0, false, {}},
        {"URL", *URL::parse("a:12"), 0, 0, false, {}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.value.integerValue(), row.integer) << row.name;
        EXPECT_EQ(row.value.doubleValue(), row.number) << row.name;
        EXPECT_EQ(row.value.floatValue(), static_cast<float>(row.number)) << row.name;
        EXPECT_EQ(row.value.boolValue(), row.boolean) << row.name;
        EXPECT_EQ(row.value.stringValue(), row.text) << row.name;
    }
    EXPECT_EQ(PropertyValue(std::nan("")).integerValue(), 0);
}

TEST(PropertyValue, URLsAndArraysOfTexts) {
    setenv("HOME", "/home/wanjiru", 1);
    EXPECT_EQ(PropertyValue(*URL::parse("https://a/b?c")).urlValue()->absoluteString(), "https://a/b?c");
    EXPECT_EQ(PropertyValue("/a b").urlValue()->path(), "/a b");
    EXPECT_EQ(PropertyValue("~/a").urlValue()->absoluteString(), "file:///home/wanjiru/a");
    EXPECT_FALSE(PropertyValue("").urlValue() || PropertyValue(1).urlValue());

    const std::vector<std::string> texts{"fr", "en"};
    EXPECT_EQ(PropertyValue(texts).stringArrayValue(), texts);
    EXPECT_FALSE(PropertyValue(Array{"a", 1}).stringArrayValue());
    EXPECT_FALSE(PropertyValue("a").stringArrayValue());
}

// The bytes of the format: they must never change.
TEST(PropertyCoding, Bytes) {
    const struct {
        const char* name;
        PropertyValue value;
        std::string bytes;
    } rows[] = {
        {"Boolean", true, "\0\1"s},
        {"integer", -2, "\1\xFE\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s},
        {"float", 1.5F, "\2\0\0\xC0\x3F"s},
        {"double", 1.5, "\3\0\0\0\0\0\0\xF8\x3F"s},
        {"text", "ab", "\4\2ab"s},
        {"long text", std::string(300, 'x'), "\4\xAC\2"s + std::string(300, 'x')},
        {"data", Data("\0\xFF"s), "\5\2\0\xFF"s},
        {"date", PropertyValue::Date(std::chrono::microseconds(1)), "\6\xE8\3\0\0\0\0\0\0"s},
        {"URL", *URL::parse("a:b"), "\7\3a:b"s},
        {"array", Array{"a", Array{}}, "\x08\2\4\1a\x08\0"s},
        {"dictionary", Dictionary{{"b", false}, {"a", ""}}, "\x09\2\1a\4\0\1b\0\0"s},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(encodeProperty(row.value), row.bytes) << row.name;
        EXPECT_EQ(decodeProperty(row.bytes), row.value) << row.name;
        for (std::size_t size = 0; size < row.bytes.size(); ++size)
            EXPECT_FALSE(decodeProperty(row.bytes.substr(0, size))) << row.name << " cut at " << size;
        EXPECT_FALSE(decodeProperty(row.bytes + '\0')) << row.name;
    }
}

TEST(PropertyCoding, RefusesWhatHasAnotherEncodingOrNone) {
    const struct {
        const char* name;
        std::string bytes;
    } rows[] = {
        {"unknown kind", "\x0A"s},
        {"third Boolean", "\0\2"s},
        {"length not in its shortest form", "\4\x81\0a"s},
        {"length without an end", "\4\x81\x81\x81\x81\x81\x81"s},
        {"length beyond the bytes", "\4\xFF\xFF\xFF\xFF\x0F"s},
        {"count beyond the bytes", "\x08\xFF\xFF\xFF\xFF\x0F"s},
        {"no URL", "\7\2a b"s},
        {"keys out of order", "\x09\2\1b\0\0\1a\0\0"s},
        {"a key twice", "\x09\2\1a\0\0\1a\0\0"s},
    };
    for (const auto& row : rows) EXPECT_FALSE(decodeProperty(row.bytes)) << row.name;

    for (const int levels : {63, 64, 100000}) {
        PropertyValue value = 1;
        std::string bytes;
        for (int i = 0; i < levels; ++i) bytes += "\x08\1"s;
        for (int i = 0; i < std::min(levels, 100); ++i) value = Array{std::move(value)};
        EXPECT_EQ(encodeProperty(value).has_value(), levels < 64);
        EXPECT_EQ(decodeProperty(bytes + "\0\1"s).has_value(), levels < 64);
    }
    EXPECT_FALSE(encodeProperty(std::string(std::size_t{64} << 20, 'x')));
}

}  // namespace
}  // namespace torvel
