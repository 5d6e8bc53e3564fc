#include "TorvelPlatform/foundation/PropertyListForms.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

#include <unicode/unistr.h>

namespace torvel {
namespace {

constexpr std::string_view whitespace = " \t\r\n";

// libplist's dictionaries grow slower with every key.
constexpr std::size_t maximumKeys = 100000;

bool isOneOf(char c, std::string_view set) { return set.find(c) != std::string_view::npos; }

bool isNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || isOneOf(c, "_-.:");
}

std::string_view trimmed(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(whitespace), text.size()));
    return text.substr(0, text.find_last_not_of(whitespace) + 1);
}

template <class Number, class... Format>
bool isNumber(std::string_view text, Format... format) {
    Number number{};
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number, format...);
    return read.ec == std::errc() && read.ptr == text.data() + text.size();
}

std::string_view withoutPlus(std::string_view text) {
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
    return text;
}

bool isInteger(std::string_view text) {
    text = trimmed(text);
    if (!text.starts_with("0x") && !text.starts_with("0X"))
        return isNumber<std::int64_t>(withoutPlus(text), 10);
    text.remove_prefix(2);
    return !text.starts_with('-') && isNumber<std::int64_t>(text, 16);
}

bool isReal(std::string_view text) { return isNumber<double>(withoutPlus(trimmed(text))); }

bool isDate(std::string_view text) { return propertyListDate(trimmed(text)).has_value(); }

bool isBase64(std::string_view text) {
    static constexpr std::string_view alphabet =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string digits(text);
    std::erase_if(digits, [](char c) { return isOneOf(c, whitespace); });
    const std::size_t end = std::min(digits.find_first_not_of(alphabet), digits.size());
    const std::string_view padding = std::string_view(digits).substr(end);
    return digits.size() % 4 == 0 && (padding.empty() || padding == "=" || padding == "==");
}

bool isBlank(std::string_view text) { return trimmed(text).empty(); }

bool isAnything(std::string_view) { return true; }

// What the elements without children hold.
struct Scalar {
    std::string_view name;
    bool (*isValid)(std::string_view);
    const char* content;
};
constexpr Scalar scalars[] = {
    {"string", isAnything, ""},
    {"key", isAnything, ""},
    {"integer", isInteger, "a 64-bit integer"},
    {"real", isReal, "a number"},
    {"date", isDate, "a date as 2024-02-29T12:34:56Z"},
    {"data", isBase64, "base64"},
    {"true", isBlank, "nothing"},
    {"false", isBlank, "nothing"},
};

struct Tag {
    std::string_view name;
    bool closing = false;
    bool empty = false;  // <name/>
    std::size_t position = 0;

    std::string written() const { return (closing ? "</" : "<") + std::string(name) + '>'; }
};

// Walks the document once and writes it anew. Every step answers whether all is well; the first that is not
// leaves the error.
class Rewriter {
  public:
    Rewriter(std::string_view text, std::vector<PropertyListKey>* rootKeys)
        : m_text(text), m_rootKeys(text, rootKeys) {}

    Outcome<std::string, PropertyListError> rewrite() {
        if (!document()) return std::move(m_error);
        return "<plist>" + m_plain + "</plist>";
    }

  private:
    bool fail(std::size_t position, const std::string& message) {
        m_error = faultAtLine(m_text, position, message);
        return false;
    }

    std::string_view rest() const { return m_text.substr(m_position); }
    bool atEnd() const { return m_position == m_text.size(); }

    bool take(std::string_view token) {
        if (!rest().starts_with(token)) return false;
        m_position += token.size();
        return true;
    }

    void skipSpace() {
        m_position = std::min(m_text.find_first_not_of(whitespace, m_position), m_text.size());
    }

    // Past the terminator of a construct that began at the current position.
    bool skipPast(std::string_view terminator, const char* construct) {
        const std::size_t end = m_text.find(terminator, m_position);
        if (end == std::string_view::npos)
            return fail(m_position, std::string(construct) + " is never closed");
        m_position = end + terminator.size();
        return true;
    }

    bool document() {
        if (!skipMiscellany() || (take("<!DOCTYPE") && (!documentType() || !skipMiscellany()))) return false;
        Tag root;
        if (!nextTag(root, "<plist>")) return false;
        if (root.closing || root.name != "plist") return unexpected(root, "<plist>");
        if (root.empty) return fail(root.position, "<plist> holds no value");
        Tag tag;
        if (!nextTag(tag, "a value") || !value(tag, 0)) return false;
        if (!nextTag(tag, "</plist>")) return false;
        if (!tag.closing || tag.name != "plist") return unexpected(tag, "</plist>");
        if (!skipMiscellany()) return false;
        return atEnd() || fail(m_position, "expected the end of the file after </plist>");
    }

    bool documentType() {
        const std::size_t end = std::min(m_text.find_first_of("[>", m_position), m_text.size());
        if (m_text.substr(end, 1) == "[")
            return fail(end, "a document type with declarations of its own is refused");
        return skipPast(">", "<!DOCTYPE");
    }

    // White space, comments and processing instructions.
    bool skipMiscellany() {
        skipSpace();
        while (isAside()) {
            if (!skipAside()) return false;
            skipSpace();
        }
        return true;
    }

    bool isAside() const { return rest().starts_with("<!--") || rest().starts_with("<?"); }
    bool skipAside() {
        return rest()[1] == '!' ? skipPast("-->", "a comment") : skipPast("?>", "a processing instruction");
    }

    bool unexpected(const Tag& tag, const std::string& expected) {
        return fail(tag.position, "expected " + expected + ", found " + tag.written());
    }

    bool nextTag(Tag& tag, const std::string& expected) {
        if (!skipMiscellany()) return false;
        if (atEnd()) return fail(m_position, "expected " + expected + ", found the end of the file");
        if (m_text[m_position] != '<') return fail(m_position, "expected " + expected + ", found text");
        return readTag(tag);
    }

    bool readTag(Tag& tag) {
        tag.position = m_position++;
        tag.closing = take("/");
        const std::size_t begin = m_position;
        while (!atEnd() && isNameCharacter(m_text[m_position])) ++m_position;
        tag.name = m_text.substr(begin, m_position - begin);
        if (tag.name.empty()) return fail(tag.position, "malformed tag");
        for (skipSpace(); !tag.closing && !atEnd() && isNameCharacter(m_text[m_position]); skipSpace()) {
            if (!attribute()) return fail(tag.position, "malformed attribute in " + tag.written());
        }
        tag.empty = !tag.closing && take("/");
        return take(">") || fail(tag.position, "malformed tag " + tag.written());
    }

    bool attribute() {
        while (!atEnd() && isNameCharacter(m_text[m_position])) ++m_position;
        skipSpace();
        if (!take("=")) return false;
        skipSpace();
        if (atEnd() || !isOneOf(m_text[m_position], "\"'")) return false;
        const char quote[] = {m_text[m_position++], '<', 0};
        m_position = std::min(m_text.find_first_of(quote, m_position), m_text.size());
        return take({quote, 1});
    }

    bool value(const Tag& tag, int depth) {
        if (tag.closing) return unexpected(tag, "a value");
        if (tag.name == "dict" || tag.name == "array") {
            if (depth == maximumPropertyListDepth)
                return fail(tag.position, "containers are nested too deeply");
            m_plain += tag.written();
            const bool whole = tag.empty || (tag.name == "dict" ? dictionary(depth + 1) : array(depth + 1));
            m_plain.append("</").append(tag.name) += '>';
            return whole;
        }
        if (tag.name == "key") return unexpected(tag, "a value");
        return scalar(tag);
    }

    bool dictionary(int depth) {
        for (std::size_t count = 0;; ++count) {
            Tag tag;
            if (!nextTag(tag, "<key> or </dict>")) return false;
            if (tag.closing) return tag.name == "dict" || unexpected(tag, "</dict>");
            if (tag.name != "key") return unexpected(tag, "<key>");
            if (count == maximumKeys) return fail(tag.position, "the dictionary has too many keys");
            const std::size_t begin = tag.position;
            if (!scalar(tag)) return false;
            if (depth == 1) m_rootKeys.note(m_content, begin);
            if (!nextTag(tag, "a value") || !value(tag, depth)) return false;
        }
    }

    bool array(int depth) {
        while (true) {
            Tag tag;
            if (!nextTag(tag, "a value or </array>")) return false;
            if (tag.closing) return tag.name == "array" || unexpected(tag, "</array>");
            if (!value(tag, depth)) return false;
        }
    }

    bool scalar(const Tag& tag) {
        const auto kind = std::find_if(std::begin(scalars), std::end(scalars),
                                       [&tag](const Scalar& row) { return row.name == tag.name; });
        if (kind == std::end(scalars)) return fail(tag.position, "unknown element " + tag.written());
        m_content.clear();
        if (!tag.empty && !textOf(tag, m_content)) return false;
        if (!kind->isValid(m_content)) {
            return fail(tag.position, "expected " + std::string(kind->content) + " in " + tag.written());
        }
        writeScalar(tag, m_content);
        return true;
    }

    void writeScalar(const Tag& tag, std::string_view content) {
        m_plain += tag.written();
        if (content.find_first_of("<&") == std::string_view::npos) {
            m_plain += content;
        } else {
            writeSections(content);
        }
        m_plain.append("</").append(tag.name) += '>';
    }

    // "]]>" cannot stand in a CDATA section: the next one takes its end.
    void writeSections(std::string_view content) {
        for (std::size_t end = 0; end != std::string_view::npos;) {
            end = content.find("]]>");
            const std::string_view section = content.substr(0, end == std::string_view::npos ? end : end + 2);
            m_plain.append("<![CDATA[").append(section).append("]]>");
            content.remove_prefix(section.size());
        }
    }

    // The text of an element, entities decoded, to the end of its closing tag.
    bool textOf(const Tag& tag, std::string& content) {
        while (true) {
            const std::size_t end = std::min(m_text.find_first_of("<&", m_position), m_text.size());
            content += m_text.substr(m_position, end - m_position);
            m_position = end;
            if (atEnd()) return fail(tag.position, tag.written() + " is never closed");
            if (rest().starts_with('&')) {
                if (!entity(content)) return false;
            } else if (rest().starts_with("<![CDATA[")) {
                const std::size_t begin = m_position + std::strlen("<![CDATA[");
                if (!skipPast("]]>", "a CDATA section")) return false;
                content += m_text.substr(begin, m_position - std::strlen("]]>") - begin);
            } else if (isAside()) {
                if (!skipAside()) return false;
            } else {
                return closing(tag);
            }
        }
    }

    bool closing(const Tag& opened) {
        Tag tag;
        if (!readTag(tag)) return false;
        const std::string expected = "</" + std::string(opened.name) + '>';
        return (tag.closing && tag.name == opened.name) || unexpected(tag, expected);
    }

    bool entity(std::string& content) {
        static constexpr std::size_t longest = 10;  // "&#x10FFFF;"
        const std::string_view written = rest().substr(0, longest);
        const std::size_t end = written.find(';');
        const std::string_view name = written.substr(1, end == std::string_view::npos ? 0 : end - 1);
        const std::optional<UChar32> scalar = name.starts_with('#') ? numbered(name.substr(1)) : named(name);
        if (!scalar) {
            const std::string_view shown = written.substr(0, written.find_first_of("; <\n"));
            return fail(m_position, "unknown entity " + std::string(shown));
        }
        icu::UnicodeString(*scalar).toUTF8String(content);
        m_position += end + 1;
        return true;
    }

    static std::optional<UChar32> named(std::string_view name) {
        static constexpr std::pair<std::string_view, UChar32> predefined[] = {
            {"amp", '&'}, {"lt", '<'}, {"gt", '>'}, {"quot", '"'}, {"apos", '\''}};
        for (const auto& [known, scalar] : predefined) {
            if (known == name) return scalar;
        }
        return std::nullopt;
    }

    // The character of "233" or "xE9", if XML 1.0 (2.2) allows it.
    static std::optional<UChar32> numbered(std::string_view digits) {
        const int base = digits.starts_with('x') ? 16 : 10;
        if (base == 16) digits.remove_prefix(1);
        std::uint32_t scalar = 0;
        const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), scalar, base);
        if (read.ec != std::errc() || read.ptr != digits.data() + digits.size()) return std::nullopt;
        const bool allowed = scalar < 0x20 ? scalar != 0 && isOneOf(static_cast<char>(scalar), whitespace)
                                           : scalar < 0xD800 || (scalar > 0xDFFF && scalar < 0x110000 &&
                                                                 scalar != 0xFFFE && scalar != 0xFFFF);
        return allowed ? std::optional(static_cast<UChar32>(scalar)) : std::nullopt;
    }

    std::string_view m_text;
    RootKeys m_rootKeys;
    std::size_t m_position = 0;
    std::string m_content;  // of the last scalar
    std::string m_plain;
    PropertyListError m_error;
};

}  // namespace

Outcome<std::string, PropertyListError> plainXMLPropertyList(std::string_view text,
                                                             std::vector<PropertyListKey>* rootKeys) {
    const auto control = std::find_if(text.begin(), text.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && !isOneOf(c, whitespace);
    });
    if (control != text.end()) {
        return faultAtLine(text, static_cast<std::size_t>(control - text.begin()), "a control character");
    }
    return Rewriter(text, rootKeys).rewrite();
}

}  // namespace torvel
