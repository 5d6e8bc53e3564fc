#include "TorvelPlatform/foundation/MonthStart.h"

#include "TorvelPlatform/foundation/Locale.h"
#include "TorvelPlatform/foundation/Predicate.h"
#include "TorvelPlatform/foundation/UnicodeText.h"

#include <memory>

#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace torvel {
namespace {

// Midnight on the first of the month, as if the zone were UTC.
std::optional<UDate> localMidnight(const icu::UnicodeString& text) {
    UErrorCode error = U_ZERO_ERROR;
    const icu::Locale locale((Locale::current().identifier() + "@calendar=gregorian").c_str());
    icu::SimpleDateFormat format("MM/yy", locale, error);
    if (U_FAILURE(error)) return std::nullopt;
    format.setLenient(false);
    format.setTimeZone(*icu::TimeZone::getGMT());
    icu::ParsePosition end;
    const UDate midnight = format.parse(text, end);
    if (end.getIndex() == 0 || end.getIndex() != text.length()) return std::nullopt;
    return midnight;
}

}  // namespace

std::optional<MonthStart> parseMonthStart(std::string_view text) {
    // ICU would also read names of months and spaces before a number.
    if (!Predicate::matches("\\d{1,2}/\\d+").evaluate(text)) return std::nullopt;
    const std::optional<UDate> midnight = localMidnight(unicodeText(text));
    if (!midnight) return std::nullopt;
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
    UErrorCode error = U_ZERO_ERROR;
    std::int32_t standard = 0, daylight = 0;
    // Where the clocks skip this midnight, the offset is the one before, and the instant that of the change.
    zone->getOffset(*midnight, true, standard, daylight, error);
    if (U_FAILURE(error)) return std::nullopt;
    return MonthStart(std::chrono::milliseconds(static_cast<std::int64_t>(*midnight) - standard - daylight));
}

}  // namespace torvel
