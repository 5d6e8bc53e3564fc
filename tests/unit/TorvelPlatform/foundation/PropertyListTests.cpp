#include "TorvelPlatform/foundation/PropertyList.h"
#include "TorvelPlatform/foundation/StringsTable.h"

#include <cstdio>
#include <memory>
#include <sstream>

#include <gtest/gtest.h>

namespace torvel {
namespace {

using namespace std::string_literals;

// The whole value as a text, kinds told apart: 1, 1.0, 'text', <bytes>, @seconds, [array], {key: value}.
std::string shown(const PropertyList& list) {
    std::ostringstream out;
    if (const auto* text = list.string()) out << "'" << *text << "'";
    if (const auto* number = list.integer()) out << *number;
    if (const auto* number = list.real()) out << std::showpoint << *number;
    if (const auto* flag = list.boolean()) out << (*flag ? "true" : "false");
    if (const auto* data = list.data()) out << "<" << data->raw() << ">";
    if (const auto* date = list.date())
        out << "@" << std::chrono::floor<std::chrono::seconds>(*date).time_since_epoch().count();
    if (const auto* array = list.array()) {
        for (const PropertyList& item : *array) out << (&item == &array->front() ? "[" : " ") << shown(item);
        out << (array->empty() ? "[]" : "]");
    }
    if (const auto* dictionary = list.dictionary()) {
        out << "{";
        for (const auto& [key, value] : *dictionary) out << key << ": " << shown(value) << "; ";
        out << "}";
    }
    return out.str();
}

// The value, or what is wrong.
std::string parsed(const std::string& text) {
    const auto list = PropertyList::parse(Data(text));
    return list ? shown(list.value()) : list.error().description;
}

// The same list as python's plistlib writes it in a form, "XML" or "BINARY".
std::string writtenByPlistlib(const std::string& form) {
    const std::string program = R"(python3 -c '
import datetime, plistlib, sys
sys.stdout.buffer.write(plistlib.dumps({
    "text": "a <b> & \"c\"", "wide": "\u20ac\U0001F600", "empty": "", "yes": True, "no": False,
    "small": 7, "negative": -5, "large": 2**40, "least": -2**63, "most": 2**63 - 1,
    "real": -1234.5, "data": bytes(range(65, 85)), "nothing": {}, "many": list(range(20)),
    "leap": datetime.datetime(2024, 2, 29, 12, 34, 56), "early": datetime.datetime(1900, 1, 1),
    "late": datetime.datetime(2100, 12, 31, 23, 59, 59), "deep": {"a": [{"b": ["c"]}]}, "\u00e9": "key",
}, fmt=plistlib.FMT_)" + form + "))'";
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(program.c_str(), "r"), pclose);
    std::string bytes(100000, '\0');
    bytes.resize(fread(bytes.data(), 1, bytes.size(), pipe.get()));
    return bytes;
}

class PropertyListOfPlistlib : public testing::TestWithParam<const char*> {};

// The seconds are those of coreutils: date -u -d "1900-01-01" +%s.
TEST_P(PropertyListOfPlistlib, ReadsEveryKindOfValue) {
    EXPECT_EQ(parsed(writtenByPlistlib(GetParam())),
              "{data: <ABCDEFGHIJKLMNOPQRST>; deep: {a: [{b: ['c']; }]; }; early: @-2208988800; empty: ''; "
              "large: 1099511627776; late: @4133980799; leap: @1709210096; least: -9223372036854775808; "
              "many: [0 1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 17 18 19]; most: 9223372036854775807; "
              "negative: -5; no: false; nothing: {}; real: -1234.50; small: 7; text: 'a <b> & \"c\"'; "
              "wide: '\u20ac\U0001F600'; yes: true; \u00e9: 'key'; }");
}

INSTANTIATE_TEST_SUITE_P(Forms, PropertyListOfPlistlib, testing::Values("XML", "BINARY"),
                         [](const auto& row) { return std::string(row.param); });

struct Row {
    const char* name;
    std::string text, outcome;
};

void expectRows(std::initializer_list<Row> rows) {
    for (const Row& row : rows) EXPECT_EQ(parsed(row.text), row.outcome) << row.name;
}

std::string repeated(std::string_view text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i) result += text;
    return result;
}

// Values as python's plistlib reads them.
TEST(XMLPropertyList, ValuesInAllTheirSpellings) {
    const auto list = [](const std::string& value) { return "<plist>" + value + "</plist>"; };
    expectRows({
        {"mark, space and comments",
         "\xEF\xBB\xBF \n<?xml version='1.0'?><!-- < --><plist version=\"1>0\"><true/><!-- --></plist>\n",
         "true"},
        {"text",
         list("<string>]]&gt;&lt; a&#x20AC;&#233;<![CDATA[<&amp;]]>]]&gt; <!-- x --> &apos;\r\n</string>"),
         "']]>< a\u20ac\u00e9<&amp;]]>  '\n'"},
        {"numbers", list("<array><integer> 0x1F </integer><integer>+5</integer><real>1e3</real></array>"),
         "[31 5 1000.00]"},
        {"data", list("<data>\n\tQUJ D\n</data>"), "<ABC>"},
        {"a key twice", list("<dict><key>a</key><true/><key>a</key><string>b</string></dict>"), "{a: 'b'; }"},
    });
}

TEST(XMLPropertyList, ErrorsSayWhereAndWhat) {
    const std::string open = "<plist>", close = "</plist>", integer = "a 64-bit integer in <integer>",
                      date = "a date as 2024-02-29T12:34:56Z in <date>";
    const auto list = [&](const std::string& value) { return open + value + close; };
    const std::string bomb = "<!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>\n";
    const std::string keys = repeated("<key>a</key><true/>", 100001);
    const Row rows[] = {
        {"string for key", list("\n<dict>\n<key>a</key><true/>\n<string>b</string></dict>"),
         "4: expected <key>, found <string>"},
        {"key without value", list("<dict><key>a</key>\n</dict>"), "2: expected a value, found </dict>"},
        {"two keys", list("<dict><key>a</key><key>b</key></dict>"), "1: expected a value, found <key>"},
        {"text in dictionary", list("<dict>\n\nx</dict>"), "3: expected <key> or </dict>, found text"},
        {"crossed tags", list("<array><dict>\r\n</array></dict>"), "2: expected </dict>, found </array>"},
        {"element in scalar", list("<string>a<b/></string>"), "1: expected </string>, found <b>"},
        {"never closed", "<plist>\n<string>a", "2: <string> is never closed"},
        {"open array", "<plist>\n<array>\n", "3: expected a value or </array>, found the end of the file"},
        {"no value", "<plist/>", "1: <plist> holds no value"},
        {"two values", list("<true/><true/>"), "1: expected </plist>, found <true>"},
        {"web page", "<!DOCTYPE html>\n<html></html>", "2: expected <plist>, found <html>"},
        {"tail", list("<true/>") + "\nx", "2: expected the end of the file after </plist>"},
        {"unknown element", list("<set/>"), "1: unknown element <set>"},
        {"integer", list("<integer>12a</integer>"), "1: expected " + integer},
        {"large integer", list("<integer>9223372036854775808</integer>"), "1: expected " + integer},
        {"comma real", list("<real>1,5</real>"), "1: expected a number in <real>"},
        {"short date", list("<date>2024-02-29</date>"), "1: expected " + date},
        {"no such day", list("<date>2023-02-29T00:00:00Z</date>"), "1: expected " + date},
        {"cut base64", list("<data>AAA</data>"), "1: expected base64 in <data>"},
        {"full true", list("<true>yes</true>"), "1: expected nothing in <true>"},
        {"entity bomb", bomb + list("<string>&b;</string>"),
         "1: a document type with declarations of its own is refused"},
        {"unknown entity", list("<string>&b;</string>"), "1: unknown entity &b"},
        {"NUL reference", list("<string>&#0;</string>"), "1: unknown entity &#0"},
        {"surrogate reference", list("<string>&#xD800;</string>"), "1: unknown entity &#xD800"},
        {"open comment", list("<!-- <true/>"), "1: a comment is never closed"},
        {"attribute", list("<string a=b>x</string>"), "1: malformed attribute in <string>"},
        {"control character", list("<string>\x01</string>"), "1: a control character"},
        {"too deep", open + repeated("<dict><key>a</key>", 100000), "1: containers are nested too deeply"},
        {"too many keys", list("<dict>" + keys + "</dict>"), "1: the dictionary has too many keys"},
    };
    for (const Row& row : rows) EXPECT_EQ(parsed(row.text), "line " + row.outcome) << row.name;
    expectRows({
        {"deep", list(repeated("<array>", 512) + repeated("</array>", 512)),
         repeated("[", 512) + repeated("]", 512)},
        {"empty", "", "offset 0: the property list is empty"},
        {"Latin-1", list("<string>\xE9</string>"),
         "offset 0: the property list is neither valid UTF-8 nor UTF-16"},
    });
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
    std::vector<std::string> chain, bomb;
    for (std::size_t i = 0; i < 600; ++i) chain.push_back(arrayOf({i + 1}));
    for (std::size_t i = 0; i < 60; ++i) bomb.push_back(arrayOf({i + 1, i + 1}));
    chain.push_back("\x09");
    bomb.push_back("\x09");
    const std::string date = "\x33\x7f\x7f\x7f\x7f\x7f\x7f\x7f\x7f", most(8, '\xff');
    expectRows({
        {"sound", binaryList({arrayOf({1, 2, 1}), "\x51\x61", "\x08"}), "['a' false 'a']"},
        {"identifier", binaryList({"\x80\x2a"}), "42"},
        {"short", "bplist00", "offset 8: the file is too short"},
        {"itself", binaryList({arrayOf({0})}), "offset 8: the container holds itself"},
        {"each other", binaryList({arrayOf({1}), arrayOf({0})}), "offset 8: the container holds itself"},
        {"reference", binaryList({arrayOf({7})}), "offset 8: a reference to none of the objects"},
        {"top", binaryList({"\x09"}, 1), "offset 27: the top object is none of the objects"},
        {"deep", binaryList(chain), "offset 1544: containers are nested too deeply"},
        {"expanding", binaryList(bomb), "offset 213: the list is too large once expanded"},
        {"key", binaryList({"\xD1\0\1\0\1"s, "\x09"}), "offset 13: expected a string as the key"},
        {"text overruns", binaryList({"\x5E\x61\x62\x63"}), "offset 8: the object overruns the file"},
        {"count overruns", binaryList({"\x5F\x13"}), "offset 9: the count overruns the file"},
        {"huge count", binaryList({"\x6F\x13"s + most}), "offset 8: the object overruns the file"},
        {"huge array", binaryList({"\xAF\x13"s + most}), "offset 8: the object overruns the file"},
        {"no count", binaryList({"\x5F\x51\x61"}), "offset 9: expected an integer as the count"},
        {"null", binaryList({"\0"s}), "offset 8: neither true nor false"},
        {"set", binaryList({"\xC0"}), "offset 8: an object of unknown kind 12"},
        {"NUL", binaryList({"\x52\x61\0"s}), "offset 9: a NUL character in a text"},
        {"date", binaryList({date}), "offset 9: the date is out of range"},
        {"unsigned", binaryList({"\x14\0\0\0\0\0\0\0\0"s + most}),
         "offset 8: the integer does not fit into 64 bits"},
        {"cut pair", binaryList({"\x61\xD8\x00"s}), "offset 9: malformed UTF-16 in a text"},
        {"Latin-1", binaryList({"\x51\xE9"}),
         "offset 0: the property list holds a text that is not valid UTF-8"},
    });
}

std::string utf16(std::u16string_view text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : text) {
        const std::string big = twoBytes(unit);
        bytes += bigEndian ? big : std::string(big.rbegin(), big.rend());
    }
    return bytes;
}

TEST(StringsTable, ReadsEveryEncodingOfAFile) {
    const std::u16string text =
        u"/* caf\u00e9 */\r\n\"k\u20ac\" = \"\U0001F600\"; // end\n'b'=c;\nkey;\n\"k\u20ac\"=\"last\";";
    const std::string files[] = {
        "/* caf\u00e9 */ \"k\u20ac\"=x; b = c; key; \"k\u20ac\" = last;",
        "\xEF\xBB\xBF{\"k\u20ac\"=last; b=c;key;}",
        utf16(u"\uFEFF" + text, true),
        utf16(u"\uFEFF" + text, false),
        utf16(text, true),
        utf16(text, false),
    };
    for (const std::string& file : files) EXPECT_EQ(parsed(file), "{b: 'c'; key: 'key'; k\u20ac: 'last'; }");
    const auto table = StringsTable::parse(Data("a = b;"));
    EXPECT_EQ(*table.value().value("a"), "b");
    EXPECT_EQ(table.value().value("none"), nullptr);
    EXPECT_EQ(StringsTable::parse(Data(" // nothing")).value().size(), 0U);
    EXPECT_EQ(StringsTable::parse(Data("a = (b);")).error().description,
              "the value of \"a\" is not a string");
    EXPECT_EQ(StringsTable::parse(Data("(a)")).error().description,
              "the root of a strings table is not a dictionary");
}

TEST(OldStylePropertyList, ValuesAndErrors) {
    const std::string half = repeated("(", 512), otherHalf = repeated(")", 512);
    expectRows({
        {"values", "{ a = ( x , \"y z\", ); d = <4142 43>; n = {}; url = http://h/p-1:$_; }",
         "{a: ['x' 'y z']; d: <ABC>; n: {}; url: 'http://h/p-1:$_'; }"},
        {"escapes", R"("\"\\\n\t\U20ac\Ud83d\Ude00\101\0\/\'")", "'\"\\\n\t\u20ac\U0001F600A\0/''"s},
        {"alone", "'alone'", "'alone'"},
        {"deep", half + otherHalf, repeated("[", 512) + repeated("]", 512)},
        {"too deep", repeated("(", 1000000), "line 1: containers are nested too deeply"},
        {"no semicolon", "a = b;\nc = d\ne = f;", "line 3: expected \";\" after a member, found \"e\""},
        {"no value", "{\n a = ;}", "line 2: expected a value, found \";\""},
        {"no key", "{ = a; }", "line 1: expected a key, found \"=\""},
        {"open dictionary", "{ a = b;\n", "line 2: expected a key, found the end of the file"},
        {"open array", "(a,\nb", "line 2: expected \")\" after an item, found the end of the file"},
        {"open string", "a = b;\n\"c = d;\n\n", "line 2: a quoted string is never closed"},
        {"escaped end", "a = \"b\\", "line 1: a quoted string is never closed"},
        {"open comment", "a = b; /* c", "line 1: a comment is never closed"},
        {"tail", "{}\n}", "line 2: expected the end of the file, found \"}\""},
        {"hex", "a = <0g>;", "line 1: expected pairs of hex digits or \">\", found \"0\""},
        {"lone surrogate", "a = \"\\Ud83dx\";", "line 1: a malformed \\U escape"},
        {"cut UTF-16", "\xFF\xFE\x61", "offset 0: the property list is neither valid UTF-8 nor UTF-16"},
    });
    const std::string whole = "{a=(\"b\\U20ac\\101\",<00ff /* c */>, /* c */ x);/*c*/d=e;}";
    for (std::size_t i = 0; i + 1 < whole.size(); ++i)
        EXPECT_FALSE(PropertyList::parse(Data(whole.substr(0, i))).ok()) << i;
}

}  // namespace
}  // namespace torvel
