#include "TorvelPlatform/foundation/OldStylePropertyList.h"

#include "TorvelPlatform/foundation/PropertyListForms.h"

#include <algorithm>

#include <unicode/unistr.h>

namespace torvel {
namespace {

constexpr std::string_view whitespace = " \t\r\n\f\v";

bool isUnquoted(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '$' || c == '/' || c == ':' || c == '.' || c == '-';
}

int digitValue(char c, int base) {
    const char lower = static_cast<char>(c | 0x20);
    const int value = c >= '0' && c <= '9' ? c - '0' : lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : base;
    return value < base ? value : -1;
}

// A recursive descent; the first fault leaves the error and unwinds by absent values.
class Parser {
  public:
    Parser(std::string_view text, std::vector<PropertyListKey>* rootKeys)
        : m_text(text), m_rootKeys(text, rootKeys) {}

    Outcome<PropertyList, PropertyListError> parse() {
        std::optional<PropertyList> list = skipSpace() ? root() : std::nullopt;
        if (list && skipSpace() && !atEnd()) fail("expected the end of the file, found " + found());
        if (m_failed) return std::move(m_error);
        return std::move(*list);
    }

  private:
    using Value = std::optional<PropertyList>;

    std::nullopt_t fail(const std::string& message) { return failAt(m_position, message); }
    std::nullopt_t failAt(std::size_t position, const std::string& message) {
        if (!m_failed) m_error = faultAtLine(m_text, position, message);
        m_failed = true;
        return std::nullopt;
    }

    bool atEnd() const { return m_position == m_text.size(); }
    char next() const { return atEnd() ? '\0' : m_text[m_position]; }
    std::string found() const { return atEnd() ? "the end of the file" : std::string{'"', next(), '"'}; }

    // White space and comments; false when a comment is open at the end.
    bool skipSpace() {
        while (true) {
            m_position = std::min(m_text.find_first_not_of(whitespace, m_position), m_text.size());
            const std::string_view rest = m_text.substr(m_position);
            if (!rest.starts_with("//") && !rest.starts_with("/*")) return true;
            const bool line = rest[1] == '/';
            const std::size_t end = line ? rest.find('\n') : rest.find("*/", 2);
            if (!line && end == std::string_view::npos) return fail("a comment is never closed"), false;
            m_position = end == std::string_view::npos ? m_text.size() : m_position + end + (line ? 1 : 2);
        }
    }

    bool take(char c) {
        if (!skipSpace() || next() != c || atEnd()) return false;
        ++m_position;
        return true;
    }

    bool expect(char c, const char* after) {
        if (take(c)) return true;
        fail(std::string("expected \"") + c + "\" after " + after + ", found " + found());
        return false;
    }

    // A value, or the members of a strings file, which start as a string does.
    Value root() {
        if (atEnd()) return PropertyList(PropertyList::Dictionary());
        const std::size_t begin = m_position;
        Value first = value(0);
        if (!first || !first->string() || !skipSpace() || (next() != '=' && next() != ';')) return first;
        m_position = begin;
        return members('\0', 1);
    }

    Value value(int depth) {
        if (!skipSpace()) return std::nullopt;
        const char opening = next();
        if ((opening == '{' || opening == '(') && depth == maximumPropertyListDepth) {
            return fail("containers are nested too deeply");
        }
        if (take('{')) return members('}', depth + 1);
        if (take('(')) return array(depth + 1);
        if (take('<')) return data();
        std::optional<std::string> text = string("a value");
        return text ? Value(std::move(*text)) : std::nullopt;
    }

    // To the closing brace or, where that is no character, to the end of the file.
    Value members(char closing, int depth) {
        PropertyList::Dictionary dictionary;
        while (true) {
            if (!skipSpace()) return std::nullopt;
            if (closing == '\0' ? atEnd() : take(closing)) return PropertyList(std::move(dictionary));
            const std::size_t begin = m_position;
            std::optional<std::string> key = string("a key");
            if (!key) return std::nullopt;
            if (depth == 1) m_rootKeys.note(*key, begin);
            Value member = take('=') ? value(depth) : Value(*key);
            if (!member || !expect(';', "a member")) return std::nullopt;
            dictionary.insert_or_assign(std::move(*key), std::move(*member));
        }
    }

    Value array(int depth) {
        PropertyList::Array items;
        while (!take(')')) {
            Value item = value(depth);
            if (!item) return std::nullopt;
            items.push_back(std::move(*item));
            if (take(',')) continue;
            if (!expect(')', "an item")) return std::nullopt;
            break;
        }
        if (m_failed) return std::nullopt;
        return PropertyList(std::move(items));
    }

    Value data() {
        std::string bytes;
        while (!take('>')) {
            const int high = digitValue(next(), 16);
            const int low =
                high < 0 || m_position + 1 == m_text.size() ? -1 : digitValue(m_text[m_position + 1], 16);
            if (m_failed || low < 0) return fail("expected pairs of hex digits or \">\", found " + found());
            bytes += static_cast<char>(high * 16 + low);
            m_position += 2;
        }
        return PropertyList(Data(std::move(bytes)));
    }

    std::optional<std::string> string(const char* expected) {
        if (!skipSpace()) return std::nullopt;
        if (next() == '"' || next() == '\'') return quoted();
        const std::size_t begin = m_position;
        while (!atEnd() && isUnquoted(next())) ++m_position;
        if (m_position == begin) return fail(std::string("expected ") + expected + ", found " + found());
        return std::string(m_text.substr(begin, m_position - begin));
    }

    std::optional<std::string> quoted() {
        const std::size_t begin = m_position;
        const char stops[] = {m_text[m_position++], '\\', '\0'};
        std::string text;
        while (true) {
            const std::size_t end = std::min(m_text.find_first_of(stops, m_position), m_text.size());
            text += m_text.substr(m_position, end - m_position);
            m_position = end;
            if (m_position + 1 >= m_text.size() && next() != stops[0])
                return failAt(begin, "a quoted string is never closed");
            if (m_text[m_position++] != '\\') return text;
            if (!escape(text)) return std::nullopt;
        }
    }

    bool escape(std::string& text) {
        static constexpr std::string_view letters = "abfnrtv", controls = "\a\b\f\n\r\t\v";
        const char c = next();
        if (c == 'U' || c == 'u') return unicodeEscape(text);
        if (digitValue(c, 8) >= 0) {
            icu::UnicodeString(static_cast<UChar32>(number(8, 3))).toUTF8String(text);
            return true;
        }
        const std::size_t index = letters.find(c);
        text += index == std::string_view::npos ? c : controls[index];
        ++m_position;
        return true;
    }

    // \Ud83d\Ude00 is one character, as in UTF-16.
    bool unicodeEscape(std::string& text) {
        const std::size_t begin = m_position - 1;
        icu::UnicodeString units(codeUnit());
        if (U16_IS_LEAD(units[0]) && m_text.substr(m_position, 1) == "\\") {
            ++m_position;
            units.append(codeUnit());
        }
        const UChar32 scalar = units.char32At(0);
        if (scalar == 0 || U_IS_SURROGATE(scalar)) return failAt(begin, "a malformed \\U escape"), false;
        units.toUTF8String(text);
        return true;
    }

    // The UTF-16 unit of "Uxxxx", 0 when it is malformed.
    char16_t codeUnit() {
        if (next() != 'U' && next() != 'u') return 0;
        const std::size_t digits = ++m_position;
        const int unit = number(16, 4);
        return m_position == digits + 4 ? static_cast<char16_t>(unit) : u'\0';
    }

    int number(int base, std::size_t maximumDigits) {
        int value = 0;
        for (std::size_t i = 0; i < maximumDigits && !atEnd() && digitValue(next(), base) >= 0;
             ++i, ++m_position) {
            value = value * base + digitValue(next(), base);
        }
        return value & (base == 8 ? 0xFF : 0xFFFF);
    }

    std::string_view m_text;
    RootKeys m_rootKeys;
    std::size_t m_position = 0;
    bool m_failed = false;
    PropertyListError m_error;
};

}  // namespace

Outcome<PropertyList, PropertyListError> parseOldStylePropertyList(std::string_view text,
                                                                   std::vector<PropertyListKey>* rootKeys) {
    return Parser(text, rootKeys).parse();
}

}  // namespace torvel
