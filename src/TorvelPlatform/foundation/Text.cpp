#include "TorvelPlatform/foundation/Text.h"

#include "TorvelPlatform/foundation/UnicodeText.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

#include <locale.h>
#include <unicode/locid.h>

namespace torvel {
namespace {

// A number too small to tell from zero is zero, one too large none. The standard library tells neither.
std::optional<double> beyondRange(std::string_view text) {
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);  // kept for ever
    const double number = ::strtod_l(std::string(text).c_str(), nullptr, plain);
    return std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

}  // namespace

std::string utf8Text(const icu::UnicodeString& text) {
    const char16_t* const units = text.getBuffer();
    const std::int32_t length = text.length();
    std::size_t most = 0;
    for (std::int32_t i = 0; i < length; ++i)
        most += std::size_t{1} + (units[i] >= 0x80) + (units[i] >= 0x800);
    std::string out(most, '\0');
    char* const bytes = out.data();
    std::size_t size = 0;
    for (std::int32_t i = 0; i < length;) {
        UChar32 c = 0;
        U16_NEXT_OR_FFFD(units, i, length, c);
        U8_APPEND_UNSAFE(bytes, size, c);
    }
    out.resize(size);  // a pair of surrogates is four bytes
    return out;
}

std::string replacingOccurrences(std::string_view text, std::string_view part, std::string_view with) {
    std::string replaced;
    replaced.reserve(text.size());
    std::size_t start = 0;
    if (!part.empty())
        for (std::size_t found; (found = text.find(part, start)) != text.npos; start = found + part.size())
            replaced.append(text, start, found - start).append(with);
    replaced.append(text, start);
    return replaced;
}

std::string uppercased(std::string_view text) {
    return utf8Text(unicodeText(text).toUpper(icu::Locale::getRoot()));
}

std::optional<double> decimalNumber(std::string_view text) {
    // What the standard library does not read: a plus sign; what it reads besides: "inf" and "nan".
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size()) return std::nullopt;
    if (error == std::errc::result_out_of_range) return beyondRange(text);
    return error == std::errc() && std::isfinite(number) ? std::optional<double>(number) : std::nullopt;
}

}  // namespace torvel
