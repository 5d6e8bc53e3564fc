#pragma once

#include "TorvelPlatform/foundation/Locale.h"

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

namespace torvel {

// Writes dates by a pattern of Unicode TR 35 ("yyyy-MM-dd hh:mm:ssSSS"), in the current time zone
// (TZ, else the system's), read once a process.
//
// A cheap value over a compiled pattern that the process keeps by pattern and locale, so that making one
// for every line of a log costs a look-up. Plain numeric patterns are written directly where the locale's
// digits are Latin and its calendar Gregorian; anything else goes through a kept ICU formatter.
// Fractions of a second (S) are cut, never rounded, and end at the millisecond. Safe from any thread.
class DateFormatter {
  public:
    // A moment.
    using Date = std::chrono::system_clock::time_point;

    // A formatter by a pattern, with a locale's names and digits.
    explicit DateFormatter(std::string_view dateFormat, const Locale& locale = Locale::current());

    // The empty text when the pattern is invalid (reported once to the diagnostics).
    std::string string(Date date) const;
    // The same at the end of `out`.
    void append(std::string& out, Date date) const;

  private:
    class Pattern;
    class Patterns;
    std::shared_ptr<const Pattern> m_pattern;
};

}  // namespace torvel
