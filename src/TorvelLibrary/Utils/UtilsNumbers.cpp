#include "TorvelLibrary/Utils/Utils.h"
#include "TorvelLibrary/crypto/Random.h"
#include "TorvelPlatform/foundation/FatalError.h"
#include "TorvelPlatform/foundation/NumberFormatter.h"
#include "TorvelPlatform/foundation/Text.h"

#include <charconv>
#include <cmath>

namespace torvel {
namespace {

constexpr std::string_view arabicDecimalSeparator = "\u066B";

template <class... Form>
std::string digits(auto number, Form... form) {
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number, form...).ptr};
}

std::string description(std::int64_t number) { return digits(number); }

// As the platform describes it: an exponent only for what is very small or very large.
std::string description(double number) {
    const bool isPlain = number == 0 || (std::abs(number) >= 1e-4 && std::abs(number) < 1e16);
    return digits(number, isPlain ? std::chars_format::fixed : std::chars_format::scientific);
}

}  // namespace

std::string Utils::getRandomNumericString(std::int64_t length) {
    if (length < 0) fatalError("Utils: a random text cannot have a negative length");
    std::string digits(static_cast<std::size_t>(length), '0');
    for (char& digit : digits) digit = "1234567890"[Random::generate(10)];
    return digits;
}

std::string Utils::getEnglishNumber(std::string_view numStr) {
    static const NumberFormatter& english =
        *new NumberFormatter(NumberFormatter::Style::none, Locale("EN"));  // usable until the very end
    const std::string withDots = replacingOccurrences(numStr, ",", ".");
    const auto number = english.number(replacingOccurrences(withDots, arabicDecimalSeparator, "."));
    if (!number) return {};
    return std::visit([](auto value) { return description(value); }, *number);
}

}  // namespace torvel
