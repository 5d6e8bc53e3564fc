#include "TorvelPlatform/foundation/PropertyList.h"
#include "TorvelPlatform/foundation/StringsTable.h"

#include <cstdio>
#include <memory>

#include <gtest/gtest.h>

namespace torvel {
namespace {

// The same list as python's plistlib writes it in a form, "XML" or "BINARY".
std::string writtenByPlistlib(const std::string& form) {
    const std::string program = R"(python3 -c '
import datetime, plistlib, sys
sys.stdout.buffer.write(plistlib.dumps({
    "text": "a <b> & \"c\"", "wide": "\u20ac\U0001F600", "empty": "", "yes": True, "no": False,
    "small": 7, "negative": -5, "large": 2**40, "least": -2**63, "most": 2**63 - 1,
    "real": -1234.5, "data": bytes(range(20)), "nothing": {}, "many": list(range(20)),
    "leap": datetime.datetime(2024, 2, 29, 12, 34, 56), "early": datetime.datetime(1900, 1, 1),
    "late": datetime.datetime(2100, 12, 31, 23, 59, 59), "deep": {"a": [{"b": ["c"]}]}, "\u00e9": "key",
}, fmt=plistlib.FMT_)" + form + "))'";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(program.c_str(), "r"), pclose);
    std::string bytes(100000, '\0');
    bytes.resize(fread(bytes.data(), 1, bytes.size(), pipe.get()));
    return bytes;
}

class PropertyListOfPlistlib : public testing::TestWithParam<const char*> {};

TEST_P(PropertyListOfPlistlib, ReadsEveryKindOfValue) {
    using namespace std::chrono;
    const auto list = PropertyList::parse(Data(writtenByPlistlib(GetParam())));
    ASSERT_TRUE(list.ok()) << list.error().description;
    const PropertyList::Dictionary& root = *list.value().dictionary();
    const auto at = [&root](const char* key) -> const PropertyList& { return root.find(key)->second; };
    const auto isDate = [&at](const char* key, sys_seconds date) { EXPECT_EQ(*at(key).date(), date) << key; };
    EXPECT_EQ(root.size(), 19U);
    EXPECT_EQ(*at("text").string(), "a <b> & \"c\"");
    EXPECT_EQ(*at("wide").string(), "\u20ac\U0001F600");
    EXPECT_EQ(*at("empty").string(), "");
    EXPECT_EQ(*at("\u00e9").string(), "key");
    EXPECT_TRUE(*at("yes").boolean());
    EXPECT_FALSE(*at("no").boolean());
    EXPECT_EQ(*at("small").integer(), 7);
    EXPECT_EQ(*at("negative").integer(), -5);
    EXPECT_EQ(*at("large").integer(), 1LL << 40);
    EXPECT_EQ(*at("least").integer(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(*at("most").integer(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(*at("real").real(), -1234.5);
    EXPECT_EQ(at("data").data()->raw().substr(18), "\x12\x13");
    EXPECT_TRUE(at("nothing").dictionary()->empty());
    EXPECT_EQ(*at("many").array()->at(19).integer(), 19);
    EXPECT_EQ(*at("deep").dictionary()->at("a").array()->at(0).dictionary()->at("b").array()->at(0).string(),
              "c");
    isDate("leap", sys_days(2024y / 2 / 29) + 12h + 34min + 56s);
    isDate("early", sys_days(1900y / 1 / 1));
    isDate("late", sys_days(2100y / 12 / 31) + 23h + 59min + 59s);
    EXPECT_EQ(at("small").string(), nullptr);
}

// Damage may leave a readable list; it must never do more harm than that.
TEST_P(PropertyListOfPlistlib, SurvivesAnyCutAndAnyFlippedBit) {
    const std::string whole = writtenByPlistlib(GetParam());
    ASSERT_GT(whole.size(), 400U);
    for (std::size_t i = 8; i + 1 < whole.size(); ++i) {  // "bplist0" is a list in the old form
        const auto cut = PropertyList::parse(Data(whole.substr(0, i)));
        EXPECT_FALSE(cut.ok()) << i;
        for (int bit = 0; bit < 8; ++bit) {
            std::string damaged = whole;
            damaged[i] = static_cast<char>(damaged[i] ^ 1 << bit);
            const auto list = PropertyList::parse(Data(damaged));
            if (list) continue;
            EXPECT_FALSE(list.error().description.empty());
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, PropertyListOfPlistlib, testing::Values("XML", "BINARY"),
                         [](const auto& row) { return std::string(row.param); });

struct Row {
    const char* name;
    std::string text;
    std::string error;  // empty: a list
};

void expectErrors(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
        const auto list = PropertyList::parse(Data(row.text));
        EXPECT_EQ(list ? "" : list.error().description, row.error) << row.name;
    }
}

std::string repeated(std::string_view text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i) result += text;
    return result;
}

TEST(XMLPropertyList, ErrorsSayWhereAndWhat) {
    const std::string open = "<plist>", close = "</plist>";
    const auto list = [&](const std::string& value) { return open + value + close; };
    const std::string bomb = "<!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>\n";
    expectErrors({
        {"mark, space and comments",
         "\xEF\xBB\xBF \n<?xml version='1.0'?><!-- < --><plist version=\"1>0\"><true/>"
         "<!-- --></plist>\n<!-- -->\n",
         ""},
        {"string for key", "<plist>\n<dict>\n<key>a</key><true/>\n<string>b</string>\n</dict></plist>",
         "line 4: expected <key>, found <string>"},
        {"key without value", list("<dict><key>a</key>\n</dict>"), "line 2: expected a value, found </dict>"},
        {"two keys", list("<dict><key>a</key><key>b</key></dict>"), "line 1: expected a value, found <key>"},
        {"key in array", list("<array><key>a</key></array>"), "line 1: expected a value, found <key>"},
        {"text in dictionary", list("<dict>\n\nx</dict>"), "line 3: expected <key> or </dict>, found text"},
        {"crossed tags", list("<array><dict>\r\n</array></dict>"),
         "line 2: expected </dict>, found </array>"},
        {"crossed scalar", list("<string>a</key>"), "line 1: expected </string>, found </key>"},
        {"element in scalar", list("<string>a<b/></string>"), "line 1: expected </string>, found <b>"},
        {"never closed", "<plist>\n<string>a", "line 2: <string> is never closed"},
        {"open array", "<plist>\n<array>\n",
         "line 3: expected a value or </array>, found the end of the file"},
        {"no value", "<plist/>", "line 1: <plist> holds no value"},
        {"two values", list("<true/><true/>"), "line 1: expected </plist>, found <true>"},
        {"other root", "<dict></dict>", "line 1: expected <plist>, found <dict>"},
        {"web page", "<!DOCTYPE html>\n<html></html>", "line 2: expected <plist>, found <html>"},
        {"tail", list("<true/>") + "\nx", "line 2: expected the end of the file after </plist>"},
        {"unknown element", list("<set/>"), "line 1: unknown element <set>"},
        {"integer", list("<integer>12a</integer>"), "line 1: expected a 64-bit integer in <integer>"},
        {"large integer", list("<integer>9223372036854775808</integer>"),
         "line 1: expected a 64-bit integer in <integer>"},
        {"no integer", list("<integer/>"), "line 1: expected a 64-bit integer in <integer>"},
        {"comma real", list("<real>1,5</real>"), "line 1: expected a number in <real>"},
        {"short date", list("<date>2024-02-29</date>"),
         "line 1: expected a date as 2024-02-29T12:34:56Z in <date>"},
        {"no such day", list("<date>2023-02-29T00:00:00Z</date>"),
         "line 1: expected a date as 2024-02-29T12:34:56Z in <date>"},
        {"cut base64", list("<data>AAA</data>"), "line 1: expected base64 in <data>"},
        {"no base64", list("<data>A?==</data>"), "line 1: expected base64 in <data>"},
        {"full true", list("<true>yes</true>"), "line 1: expected nothing in <true>"},
        {"entity bomb", bomb + list("<string>&b;</string>"),
         "line 1: a document type with declarations of its own is refused"},
        {"unknown entity", list("<string>&b;</string>"), "line 1: unknown entity &b"},
        {"NUL reference", list("<string>&#0;</string>"), "line 1: unknown entity &#0"},
        {"surrogate reference", list("<string>&#xD800;</string>"), "line 1: unknown entity &#xD800"},
        {"bare ampersand", list("<string>a & b</string>"), "line 1: unknown entity &"},
        {"open comment", list("<!-- <true/>"), "line 1: a comment is never closed"},
        {"attribute", list("<string a=b>x</string>"), "line 1: malformed attribute in <string>"},
        {"control character", list("<string>\x01</string>"), "line 1: a control character"},
        {"deep", list(repeated("<array>", 512) + repeated("</array>", 512)), ""},
        {"too deep", repeated("<array>", 1000000), "line 1: expected <plist>, found <array>"},
        {"too deep inside", open + repeated("<dict><key>a</key>", 100000),
         "line 1: containers are nested too deeply"},
        {"too many keys", list("<dict>" + repeated("<key>a</key><true/>", 100001) + "</dict>"),
         "line 1: the dictionary has too many keys"},
        {"empty", "", "offset 0: the property list is empty"},
        {"Latin-1", list("<string>\xE9</string>"),
         "offset 0: the property list is neither valid UTF-8 nor UTF-16"},
    });
}

// Values as python's plistlib reads them.
TEST(XMLPropertyList, TextsAndNumbersInAllTheirSpellings) {
    const auto list = PropertyList::parse(Data(
        "<plist><array><string>]]&gt;&lt; a&#x20AC;&#233;<![CDATA[<&amp;]]>]]&gt; <!-- x --> "
        "&apos;\r\n</string><integer> 0x1F "
        "</integer>"
        "<integer>+5</integer><real>1e3</real><data>\n\tAQ ID\n</data><dict><key>a</key><true/><key>a</key>"
        "<string>last</string></dict></array></plist>"));
    ASSERT_TRUE(list.ok()) << list.error().description;
    const PropertyList::Array& items = *list.value().array();
    EXPECT_EQ(*items[0].string(), "]]>< a\u20ac\u00e9<&amp;]]>  '\n");
    EXPECT_EQ(*items[1].integer(), 31);
    EXPECT_EQ(*items[2].integer(), 5);
    EXPECT_EQ(*items[3].real(), 1000.0);
    EXPECT_EQ(items[4].data()->raw(), "\x01\x02\x03");
    EXPECT_EQ(*items[5].dictionary()->at("a").string(), "last");
}

std::string twoBytes(std::size_t number) {
    return {static_cast<char>(number >> 8), static_cast<char>(number)};
}

// A binary list of the objects with two-byte offsets and references; the first is the top.
std::string binaryList(const std::vector<std::string>& objects, std::size_t top = 0) {
    std::string bytes = "bplist00", offsets;
    for (const std::string& object : objects) {
        offsets += twoBytes(bytes.size());
        bytes += object;
    }
    const std::string zeros(6, '\0'), table = twoBytes(bytes.size());
    return bytes + offsets + zeros + "\x02\x02" + zeros + twoBytes(objects.size()) + zeros + twoBytes(top) +
           zeros + table;
}

std::string arrayOf(std::initializer_list<std::size_t> references) {
    std::string object(1, static_cast<char>(0xA0 + references.size()));
    for (const std::size_t reference : references) object += twoBytes(reference);
    return object;
}

TEST(BinaryPropertyList, ErrorsSayWhereAndWhat) {
    using namespace std::string_literals;
    std::vector<std::string> chain, bomb;
    for (std::size_t i = 0; i < 600; ++i) chain.push_back(arrayOf({i + 1}));
    for (std::size_t i = 0; i < 60; ++i) bomb.push_back(arrayOf({i + 1, i + 1}));
    chain.push_back("\x09");
    bomb.push_back("\x09");
    const std::string date = "\x33\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f", most(8, '\xff');
    expectErrors({
        {"sound",
         binaryList({arrayOf({1, 2, 1}),
                     "\x51"
                     "a",
                     "\x08"}),
         ""},
        {"short", "bplist00", "offset 8: the file is too short"},
        {"itself", binaryList({arrayOf({0})}), "offset 8: the container holds itself"},
        {"each other", binaryList({arrayOf({1}), arrayOf({0})}), "offset 8: the container holds itself"},
        {"reference", binaryList({arrayOf({7})}), "offset 8: a reference to none of the objects"},
        {"top", binaryList({"\x09"}, 1), "offset 27: the top object is none of the objects"},
        {"deep", binaryList(chain), "offset 1544: containers are nested too deeply"},
        {"expanding", binaryList(bomb), "offset 213: the list is too large once expanded"},
        {"key", binaryList({"\xD1\0\1\0\1"s, "\x09"}), "offset 13: expected a string as the key"},
        {"text overruns",
         binaryList({"\x5E"
                     "abc"}),
         "offset 8: the object overruns the file"},
        {"count overruns", binaryList({"\x5F\x13"}), "offset 9: the count overruns the file"},
        {"huge count", binaryList({"\x6F\x13"s + most}), "offset 8: the object overruns the file"},
        {"huge array", binaryList({"\xAF\x13"s + most}), "offset 8: the object overruns the file"},
        {"no count",
         binaryList({"\x5F\x51"
                     "a"}),
         "offset 9: expected an integer as the count"},
        {"null", binaryList({"\0"s}), "offset 8: neither true nor false"},
        {"set", binaryList({"\xC0"}), "offset 8: an object of unknown kind 12"},
        {"NUL",
         binaryList({"\x52"
                     "a\0"s}),
         "offset 9: a NUL character in a text"},
        {"date", binaryList({date}), "offset 9: the date is out of range"},
        {"unsigned", binaryList({"\x14\0\0\0\0\0\0\0\0"s + most}),
         "offset 8: the integer does not fit into 64 bits"},
        {"cut pair", binaryList({"\x61\xD8\x00"s}), "offset 9: malformed UTF-16 in a text"},
        {"pair in disorder", binaryList({"\x62\xDC\x00\xD8\x00"s}), "offset 9: malformed UTF-16 in a text"},
        {"Latin-1", binaryList({"\x51\xE9"}),
         "offset 0: the property list holds a text that is not valid UTF-8"},
    });
    const auto identifier = PropertyList::parse(Data(binaryList({"\x80\x2a"})));
    EXPECT_EQ(*identifier.value().integer(), 42);
}

std::string utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const std::string big = twoBytes(unit);
        bytes += bigEndian ? big : std::string(big.rbegin(), big.rend());
    }
    return bytes;
}

TEST(OldStylePropertyList, ReadsStringsFilesInEveryEncoding) {
    const std::u16string text =
        u"/* caf\u00e9 */\r\n\"k\u20ac\" = \"\U0001F600\"; // end\n'b'=c;\nkey;\n\"k\u20ac\"=\"last\";";
    const std::string files[] = {
        "/* caf\u00e9 */ \"k\u20ac\"=x; b = c; key; \"k\u20ac\" = last;",
        "\xEF\xBB\xBF"
        "{\"k\u20ac\"=last; b=c;key;}",
        utf16(u"\uFEFF" + text, true),
        utf16(u"\uFEFF" + text, false),
        utf16(text, true),
        utf16(text, false),
        "<plist><dict><key>b</key><string>c</string><key>key</key><string>key</string><key>k\u20ac</key>"
        "<string>last</string></dict></plist>",
    };
    for (const std::string& file : files) {
        const auto table = StringsTable::parse(Data(file));
        ASSERT_TRUE(table.ok()) << table.error().description << file;
        EXPECT_EQ(table.value().size(), 3U);
        EXPECT_EQ(*table.value().value("b"), "c");
        EXPECT_EQ(*table.value().value("key"), "key");
        EXPECT_EQ(*table.value().value("k\u20ac"), "last");
        EXPECT_EQ(table.value().value("none"), nullptr);
    }
    EXPECT_EQ(StringsTable::parse(Data(" // nothing")).value().size(), 0U);
    EXPECT_EQ(StringsTable::parse(Data("a = (b);")).error().description,
              "the value of \"a\" is not a string");
    EXPECT_EQ(StringsTable::parse(Data("(a)")).error().description,
              "the root of a strings table is not a dictionary");
}

TEST(OldStylePropertyList, ReadsValuesAndEscapes) {
    const auto list = PropertyList::parse(Data(
        R"({ a = ( x , "y z", ); d = <0fbd 77 1C>; url = http://h/p-1:$_; e = "\"\\\n\t\U20ac\Ud83d\Ude00\101\0\/\'"; n = {}; })"));
    ASSERT_TRUE(list.ok()) << list.error().description;
    const PropertyList::Dictionary& root = *list.value().dictionary();
    EXPECT_EQ(root.at("a").array()->size(), 2U);
    EXPECT_EQ(*root.at("a").array()->at(1).string(), "y z");
    EXPECT_EQ(root.at("d").data()->raw(), "\x0f\xbd\x77\x1c");
    EXPECT_EQ(*root.at("url").string(), "http://h/p-1:$_");
    EXPECT_EQ(*root.at("e").string(), std::string("\"\\\n\t\u20ac\U0001F600A\0/'", 15));
    EXPECT_TRUE(root.at("n").dictionary()->empty());
    EXPECT_EQ(*PropertyList::parse(Data("'alone'")).value().string(), "alone");
}

TEST(OldStylePropertyList, ErrorsSayWhereAndWhat) {
    expectErrors({
        {"no semicolon", "a = b;\nc = d\ne = f;", "line 3: expected \";\" after a member, found \"e\""},
        {"no value", "{\n a = ;}", "line 2: expected a value, found \";\""},
        {"no key", "{ = a; }", "line 1: expected a key, found \"=\""},
        {"open dictionary", "{ a = b;\n", "line 2: expected a key, found the end of the file"},
        {"open array", "(a,\nb", "line 2: expected \")\" after an item, found the end of the file"},
        {"open string", "a = b;\n\"c = d;\n\n", "line 2: a quoted string is never closed"},
        {"escaped end", "a = \"b\\", "line 1: a quoted string is never closed"},
        {"open comment", "a = b; /* c", "line 1: a comment is never closed"},
        {"open comment in array", "(a, /* c", "line 1: a comment is never closed"},
        {"open comment in data", "a = <00 /* c", "line 1: a comment is never closed"},
        {"tail", "{}\n}", "line 2: expected the end of the file, found \"}\""},
        {"hex", "a = <0g>;", "line 1: expected pairs of hex digits or \">\", found \"0\""},
        {"odd hex", "a = <0", "line 1: expected pairs of hex digits or \">\", found \"0\""},
        {"lone surrogate", "a = \"\\Ud83dx\";", "line 1: a malformed \\U escape"},
        {"short escape", "a = \"\\U12\";", "line 1: a malformed \\U escape"},
        {"deep", repeated("(", 512) + repeated(")", 512), ""},
        {"too deep", repeated("(", 1000000), "line 1: containers are nested too deeply"},
        {"cut UTF-16",
         "\xFF\xFE"
         "a",
         "offset 0: the property list is neither valid UTF-8 nor UTF-16"},
    });
    const std::string whole = "{a=(\"b\\U20ac\\101\",<00ff>);/*c*/d=e;}";
    for (std::size_t i = 0; i + 1 < whole.size(); ++i)
        EXPECT_FALSE(PropertyList::parse(Data(whole.substr(0, i))).ok()) << i;
}

}  // namespace
}  // namespace torvel
