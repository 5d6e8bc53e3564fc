#include "TorvelPlatform/foundation/Text.h"

#include "TorvelPlatform/foundation/UnicodeText.h"

#include <cmath>
#include <cstdlib>

#include <locale.h>
#include <unicode/locid.h>

namespace torvel {

std::string replacingOccurrences(std::string_view text, std::string_view part, std::string_view with) {
    std::string replaced;
    replaced.reserve(text.size());
    std::size_t start = 0;
    if (!part.empty())
        for (std::size_t found; (found = text.find(part, start)) != text.npos; start = found + part.size())
            replaced.append(text, start, found - start).append(with);
    return replaced.append(text, start);
}

std::string uppercased(std::string_view text) {
    return utf8Text(unicodeText(text).toUpper(icu::Locale::getRoot()));
}

std::optional<double> decimalNumber(std::string_view text) {
    // The C library reads white space, hexadecimal, "inf" and "nan" too.
    if (text.empty() || text.find_first_not_of("0123456789+-.eE") != text.npos) return std::nullopt;
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);  // kept for ever
    const std::string copy(text);
    char* end = nullptr;
    const double number = ::strtod_l(copy.c_str(), &end, plain);
    if (end != copy.c_str() + copy.size() || !std::isfinite(number)) return std::nullopt;
    return number;
}

}  // namespace torvel
