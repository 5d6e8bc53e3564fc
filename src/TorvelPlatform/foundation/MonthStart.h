#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace torvel {

// Milliseconds since 1970, which reach further than the system's clock.
using MonthStart = std::chrono::sys_time<std::chrono::milliseconds>;

// Reads a month and year ("08/27", by the Unicode pattern MM/yy) as the first instant of that month in the
// current time zone. The calendar is the Gregorian one whatever the locale's is; its digits may be the
// locale's. Two digits name the year that is at most 80 years back or 20 ahead; any other number of digits
// is the year itself. Absent unless the whole text is a month that exists. Any thread.
std::optional<MonthStart> parseMonthStart(std::string_view text);

}  // namespace torvel
