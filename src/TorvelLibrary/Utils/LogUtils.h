#pragma once

#include "TorvelPlatform/foundation/DateFormatter.h"

#include <charconv>
#include <cmath>
#include <concepts>
#include <source_location>
#include <sstream>
#include <string>
#include <string_view>

namespace torvel {

// The place that a log line names.
struct LogSite {
    // Where the call stands: what a host gets when it says nothing.
    LogSite(const std::source_location& where = std::source_location::current())
        : LogSite(where.file_name(), where.line(), where.column(), where.function_name()) {}

    // A file and a function under names of the caller's choice, with the line and column of the call.
    LogSite(std::string_view file, std::string_view function,
            const std::source_location& where = std::source_location::current())
        : LogSite(file, where.line(), where.column(), function) {}

    // A place by all its parts.
    LogSite(std::string_view file, std::uint_least32_t lineNumber, std::uint_least32_t columnNumber,
            std::string_view function)
        : filename(file), line(lineNumber), column(columnNumber), funcName(function) {}

    std::string_view filename;   // the path, of which a line shows the last part without extension
    std::uint_least32_t line;    // from 1
    std::uint_least32_t column;  // from 1
    std::string_view funcName;   // the signature
};

// A text that the log prints as itself; a null pointer is "nil".
template <class T>
std::string_view logText(const T& object) {
    if constexpr (std::convertible_to<const T&, const char*>) {
        const char* const text = object;
        return text == nullptr ? "nil" : text;
    } else {
        return object;
    }
}

// How the log prints a value: a text as itself, a Boolean as a word, a number in its shortest form (a whole
// floating-point number with ".0", a very large or very small one with an exponent), anything else by its
// stream operator.
template <class T>
std::string logDescription(const T& object) {
    if constexpr (std::convertible_to<const T&, std::string_view>) {
        return std::string(logText(object));
    } else if constexpr (std::same_as<T, bool>) {
        return object ? "true" : "false";
    } else if constexpr (std::floating_point<T>) {
        char text[64];
        const T magnitude = std::abs(object);
        const bool plain = magnitude == 0 || (magnitude >= T(1e-4) && magnitude < T(1e16));
        const auto format = plain ? std::chars_format::fixed : std::chars_format::general;
        std::string shortest(text, std::to_chars(text, text + sizeof text, object, format).ptr);
        return shortest.find_first_not_of("-0123456789") == std::string::npos ? shortest + ".0" : shortest;
    } else {
        std::ostringstream text;
        text << object;
        return std::move(text).str();
    }
}

// The library's only diagnostic output: lines on standard output, silent until the host enables them.
//
//   2024-05-07 03:15:42123 [‼️] ERROR[TorvelLibrary]:196 23 sharedInstance() -> message
//
// A line is assembled even while logging is off; only the write is skipped. Any thread.
class LogUtils {
  public:
    // Whether lines are written; not at first.
    static void setLoggingEnabled(bool isEnabled);

    // A Unicode date pattern, "yyyy-MM-dd hh:mm:ssSSS" at first: the 12-hour clock without a marker, the
    // milliseconds right behind the seconds. The next line uses what was set last.
    static std::string dateFormat();
    static void setDateFormat(std::string_view pattern);
    // A formatter for `dateFormat` in the current locale and time zone; a new value each time.
    static DateFormatter dateFormatter();

    // One line of a severity: error, information, debug, verbose, warning, severe.
    template <class T>
    static void e(const T& object, const LogSite& site = std::source_location::current()) {
        log("[‼️] ERROR", object, site);
    }
    template <class T>
    static void i(const T& object, const LogSite& site = std::source_location::current()) {
        log("[ℹ️] INFO", object, site);
    }
    template <class T>
    static void d(const T& object, const LogSite& site = std::source_location::current()) {
        log("[💬] DEBUG", object, site);
    }
    template <class T>
    static void v(const T& object, const LogSite& site = std::source_location::current()) {
        log("[🔬] VERBOSE", object, site);
    }
    template <class T>
    static void w(const T& object, const LogSite& site = std::source_location::current()) {
        log("[⚠️] WARNING", object, site);
    }
    template <class T>
    static void s(const T& object, const LogSite& site = std::source_location::current()) {
        log("[🔥] SEVERE", object, site);
    }

    // The value alone, without a prefix, when logging is enabled.
    template <class T>
    static void print(const T& object) {
        write(logDescription(object));
    }

  private:
    template <class T>
    static void log(std::string_view tag, const T& object, const LogSite& site) {
        if constexpr (std::convertible_to<const T&, std::string_view>)
            write(line(tag, logText(object), site));
        else
            write(line(tag, logDescription(object), site));
    }
    static std::string line(std::string_view tag, std::string_view text, const LogSite& site);
    static void write(std::string line);
};

}  // namespace torvel
