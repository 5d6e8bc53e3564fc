#include "TorvelPlatform/defaults/PropertyValue.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>

namespace torvel {
namespace {

constexpr std::string_view whiteSpace = " \t\n\v\f\r";
constexpr std::string_view digits = "0123456789";

// A number at the start of a text: its sign, and what follows the white space and the sign.
struct SignedText {
    bool isNegative = false;
    std::string_view rest;
};

SignedText signedText(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(whiteSpace), text.size()));
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+')) text.remove_prefix(1);
    return {isNegative, text};
}

std::string_view withoutLeadingZeros(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of('0'), text.size()));
}

std::int64_t integerOf(std::string_view text) {
    using Limits = std::numeric_limits<std::int64_t>;
    const auto [isNegative, rest] = signedText(text);
    std::uint64_t magnitude = 0;
    const auto parsed = std::from_chars(rest.data(), rest.data() + rest.size(), magnitude);
    const std::uint64_t limit = std::uint64_t{Limits::max()} + (isNegative ? 1 : 0);
    if (parsed.ec == std::errc::result_out_of_range || magnitude > limit) magnitude = limit;
    return static_cast<std::int64_t>(isNegative ? 0 - magnitude : magnitude);
}

std::int64_t integerOf(double number) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (std::isnan(number)) return 0;
    if (number >= 0x1p63) return Limits::max();
    if (number <= -0x1p63) return Limits::min();
    return static_cast<std::int64_t>(number);
}

// Whether a decimal number that no double can hold is too small rather than too large.
bool isTiny(std::string_view number) {
    const std::size_t exponent = number.find_first_of("eE");
    if (exponent != std::string_view::npos) return number.substr(exponent + 1).starts_with('-');
    return withoutLeadingZeros(number).starts_with('.');
}

double doubleOf(std::string_view text) {
    const auto [isNegative, rest] = signedText(text);
    // from_chars would read "inf" and "nan", which are no decimal numbers
    if (rest.empty() || (digits.find(rest.front()) == std::string_view::npos && rest.front() != '.'))
        return 0;
    double number = 0;
    const auto parsed = std::from_chars(rest.data(), rest.data() + rest.size(), number);
    if (parsed.ec == std::errc::result_out_of_range)
        number = isTiny({rest.data(), parsed.ptr}) ? 0 : std::numeric_limits<double>::infinity();
    return isNegative ? -number : number;
}

bool boolOf(std::string_view text) {
    const std::string_view rest = withoutLeadingZeros(signedText(text).rest);
    return !rest.empty() && std::string_view("YyTt123456789").find(rest.front()) != std::string_view::npos;
}

std::string significantDigits(double number, int precision) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number, std::chars_format::general, precision).ptr};
}

std::string withHome(std::string_view path) {
    const char* const home = std::getenv("HOME");
    const bool isInHome = path == "~" || path.starts_with("~/");
    return isInHome && home != nullptr ? home + std::string(path.substr(1)) : std::string(path);
}

template <class... Cases>
struct Overloaded : Cases... {
    using Cases::operator()...;
};
template <class... Cases>
Overloaded(Cases...) -> Overloaded<Cases...>;  // clang 16 does not deduce it

}  // namespace

PropertyValue::PropertyValue(const PropertyValue&) = default;
PropertyValue::PropertyValue(PropertyValue&&) noexcept = default;
PropertyValue& PropertyValue::operator=(const PropertyValue&) = default;
PropertyValue& PropertyValue::operator=(PropertyValue&&) noexcept = default;
PropertyValue::~PropertyValue() = default;

std::int64_t PropertyValue::integerValue() const {
    return std::visit(
        Overloaded{[](bool value) { return std::int64_t{value}; }, [](std::int64_t value) { return value; },
                   [](float value) { return integerOf(double{value}); },
                   [](double value) { return integerOf(value); },
                   [](const std::string& value) { return integerOf(value); },
                   [](const auto&) { return std::int64_t{0}; }},
        m_value);
}

double PropertyValue::doubleValue() const {
    return std::visit(
        Overloaded{[](bool) { return 0.0; }, [](std::int64_t value) { return static_cast<double>(value); },
                   [](float value) { return double{value}; }, [](double value) { return value; },
                   [](const std::string& value) { return doubleOf(value); }, [](const auto&) { return 0.0; }},
        m_value);
}

bool PropertyValue::boolValue() const {
    return std::visit(
        Overloaded{[](bool value) { return value; }, [](std::int64_t value) { return value != 0; },
                   [](float value) { return value != 0; }, [](double value) { return value != 0; },
                   [](const std::string& value) { return boolOf(value); }, [](const auto&) { return false; }},
        m_value);
}

std::optional<std::string> PropertyValue::stringValue() const {
    using Text = std::optional<std::string>;
    return std::visit(
        Overloaded{[](bool value) { return Text(value ? "1" : "0"); },
                   [](std::int64_t value) { return Text(std::to_string(value)); },
                   [](float value) { return Text(significantDigits(double{value}, 7)); },
                   [](double value) { return Text(significantDigits(value, 16)); },
                   [](const std::string& value) { return Text(value); }, [](const auto&) { return Text(); }},
        m_value);
}

std::optional<URL> PropertyValue::urlValue() const {
    if (const URL* const url = as<URL>()) return *url;
    const std::string* const path = as<std::string>();
    if (path == nullptr || path->empty()) return std::nullopt;
    return URL::file(withHome(*path));
}

std::optional<std::vector<std::string>> PropertyValue::stringArrayValue() const {
    const Array* const array = as<Array>();
    if (array == nullptr) return std::nullopt;
    std::vector<std::string> texts;
    for (const PropertyValue& element : *array) {
        if (element.as<std::string>() == nullptr) return std::nullopt;
        texts.push_back(*element.as<std::string>());
    }
    return texts;
}

}  // namespace torvel
