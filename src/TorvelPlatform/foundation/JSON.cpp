#include "TorvelPlatform/foundation/JSON.h"

#include "TorvelPlatform/foundation/Data.h"

#include <simdjson.h>

namespace torvel {

using simdjson::dom::element;

struct JSON::Document {
    simdjson::dom::document tape;
    bool hasNumbers = true;
};

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

std::size_t digitsAt(std::string_view text, std::size_t begin) {
    const std::size_t end = text.find_first_not_of("0123456789", begin);
    return std::min(end, text.size()) - std::min(begin, text.size());
}

// Length of the number (RFC 8259, 6) that the text starts with, 0 when it starts with none.
std::size_t numberLength(std::string_view text) {
    std::size_t end = text.starts_with('-') ? 1 : 0;
    const std::size_t whole = digitsAt(text, end);
    if (whole == 0) return 0;
    end += text[end] == '0' ? 1 : whole;
    if (end < text.size() && text[end] == '.') {
        if (const std::size_t fraction = digitsAt(text, end + 1)) end += 1 + fraction;
    }
    if (end < text.size() && (text[end] | 0x20) == 'e') {
        const std::size_t sign = end + 1 < text.size() && (text[end + 1] == '+' || text[end + 1] == '-');
        if (const std::size_t exponent = digitsAt(text, end + 1 + sign)) end += 1 + sign + exponent;
    }
    return end;
}

std::size_t stringLength(std::string_view text) {
    std::size_t end = 1;
    while (end < text.size() && text[end] != '"') end += text[end] == '\\' ? 2 : 1;
    return std::min(end + 1, text.size());
}

// The document with every well-formed number replaced by 0. The parser refuses numbers that no machine word
// holds, which are JSON all the same.
std::string withoutNumbers(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t number = numberLength(text);
        const std::size_t taken = number != 0 ? number : text.front() == '"' ? stringLength(text) : 1;
        result += number != 0 ? std::string_view("0") : text.substr(0, taken);
        text.remove_prefix(taken);
    }
    return result;
}

simdjson::simdjson_result<element> parseInto(simdjson::dom::document& tape, std::string_view text) {
    simdjson::dom::parser parser;
    return parser.parse_into_document(tape, text.empty() ? "" : text.data(), text.size());
}

}  // namespace

Outcome<JSON, JSONError> JSON::parse(std::string_view text) {
    if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
    auto document = std::make_shared<Document>();
    auto root = parseInto(document->tape, text);
    if (root.error() == simdjson::NUMBER_ERROR) {
        root = parseInto(document->tape, withoutNumbers(text));
        document->hasNumbers = false;
    }
    if (root.error() != simdjson::SUCCESS) {
        std::string description = std::string("The data is not valid JSON: ") + error_message(root.error());
        if (!description.ends_with('.')) description += '.';
        return JSONError{std::move(description)};
    }
    return JSON(std::move(document), std::bit_cast<Element>(root.value_unsafe()));
}

bool JSON::isObject() const { return std::bit_cast<element>(m_element).is_object(); }

bool JSON::isNull() const { return std::bit_cast<element>(m_element).is_null(); }

bool JSON::isTrue() const {
    bool value = false;
    return std::bit_cast<element>(m_element).get(value) == simdjson::SUCCESS && value;
}

std::optional<JSON> JSON::member(std::string_view name) const {
    simdjson::dom::object object;
    if (std::bit_cast<element>(m_element).get(object) != simdjson::SUCCESS) return std::nullopt;
    std::optional<JSON> found;
    for (const auto field : object) {
        if (field.key == name) found = JSON(m_document, std::bit_cast<Element>(field.value));
    }
    return found;
}

std::optional<std::string_view> JSON::string() const {
    std::string_view text;
    if (std::bit_cast<element>(m_element).get(text) != simdjson::SUCCESS) return std::nullopt;
    return text;
}

std::optional<double> JSON::number() const {
    double value = 0;
    const bool isNumber = std::bit_cast<element>(m_element).get(value) == simdjson::SUCCESS;
    return isNumber && m_document->hasNumbers ? std::optional(value) : std::nullopt;
}

std::vector<JSON> JSON::elements() const {
    std::vector<JSON> all;
    simdjson::dom::array array;
    if (std::bit_cast<element>(m_element).get(array) != simdjson::SUCCESS) return all;
    for (const element value : array) all.push_back(JSON(m_document, std::bit_cast<Element>(value)));
    return all;
}

}  // namespace torvel
