#include "TorvelPlatform/foundation/DateFormatter.h"

#include "TorvelPlatform/foundation/Diagnostics.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <map>
#include <mutex>
#include <vector>

#include <unicode/calendar.h>
#include <unicode/numsys.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace torvel {
namespace {

using namespace std::chrono;
using Milliseconds = time_point<system_clock, milliseconds>;

// A run of one pattern letter, or a literal text.
struct Field {
    char symbol;  // 0 for a literal
    std::size_t width;
    std::string literal;
};

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

// Takes quoted text from the pattern, which starts with the quote. Two quotes are one, inside and outside; an
// open quotation reaches to the end, as in ICU.
std::string takeQuoted(std::string_view& pattern) {
    std::string text;
    if (pattern.starts_with("''")) {
        pattern.remove_prefix(2);
        return "'";
    }
    pattern.remove_prefix(1);
    while (!pattern.empty()) {
        const bool quote = pattern.front() == '\'';
        const bool twice = pattern.starts_with("''");
        if (!quote || twice) text += pattern.front();
        pattern.remove_prefix(twice ? 2 : 1);
        if (quote && !twice) break;
    }
    return text;
}

Field takeField(std::string_view& pattern) {
    const char first = pattern.front();
    if (first == '\'') return {0, 0, takeQuoted(pattern)};
    std::size_t width = 1;
    while (isLetter(first) && width < pattern.size() && pattern[width] == first) ++width;
    pattern.remove_prefix(width);
    return isLetter(first) ? Field{first, width, {}} : Field{0, 0, {first}};
}

// A field that is a plain number in a Gregorian calendar.
bool isNumeric(const Field& field) {
    return field.symbol == 0 || std::strchr("ydHhmsS", field.symbol) != nullptr ||
           (field.symbol == 'M' && field.width <= 2);
}

bool hasLatinDigitsAndGregorianCalendar(const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<icu::NumberingSystem> numbers(icu::NumberingSystem::createInstance(locale, status));
    const std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(locale, status));
    return U_SUCCESS(status) && std::string_view(numbers->getName()) == "latn" &&
           std::string_view(calendar->getType()) == "gregorian";
}

// The current zone's offset from UTC. It is asked for once a second of time in each thread: even the odd
// offsets of older zones change on whole seconds.
milliseconds zoneOffset(Milliseconds date) {
    static const icu::TimeZone& zone = *icu::TimeZone::createDefault();  // kept for ever
    thread_local sys_seconds second{seconds::min()};
    thread_local milliseconds offset{};
    if (second != floor<seconds>(date)) {
        second = floor<seconds>(date);
        std::int32_t standard = 0, daylight = 0;
        UErrorCode status = U_ZERO_ERROR;
        zone.getOffset(static_cast<UDate>(date.time_since_epoch().count()), false, standard, daylight,
                       status);
        offset = milliseconds(standard + daylight);
    }
    return offset;
}

void appendNumber(std::string& out, std::int64_t number, std::size_t width) {
    char digits[20];
    char* const end = digits + sizeof digits;
    char* begin = end;
    for (; number != 0; number /= 10) *--begin = static_cast<char>('0' + number % 10);
    const char* const padded = end - std::min(width, sizeof digits);
    while (begin > padded) *--begin = '0';
    if (width > sizeof digits) out.append(width - sizeof digits, '0');
    out.append(begin, end);
}

// Milliseconds cut to the width, or with zeros up to it.
void appendFraction(std::string& out, std::int64_t millisecond, std::size_t width) {
    const char digits[] = {static_cast<char>('0' + millisecond / 100),
                           static_cast<char>('0' + millisecond / 10 % 10),
                           static_cast<char>('0' + millisecond % 10)};
    out.append(digits, std::min<std::size_t>(width, 3));
    if (width > 3) out.append(width - 3, '0');
}

// A local date and time taken apart.
struct LocalTime {
    year_month_day day;
    hh_mm_ss<milliseconds> time;

    explicit LocalTime(Milliseconds local) : day(floor<days>(local)), time(local - floor<days>(local)) {}

    void append(std::string& out, const Field& field) const {
        const std::int64_t year = int{day.year()}, hour = time.hours().count(), half = hour % 12;
        switch (field.symbol) {
            case 'y':
                return appendNumber(out, field.width == 2 ? year % 100 : year, field.width);
            case 'M':
                return appendNumber(out, unsigned{day.month()}, field.width);
            case 'd':
                return appendNumber(out, unsigned{day.day()}, field.width);
            case 'H':
                return appendNumber(out, hour, field.width);
            case 'h':
                return appendNumber(out, half == 0 ? 12 : half, field.width);
            case 'm':
                return appendNumber(out, time.minutes().count(), field.width);
            case 's':
                return appendNumber(out, time.seconds().count(), field.width);
            case 'S':
                return appendFraction(out, time.subseconds().count(), field.width);
            default:
                out += field.literal;
        }
    }
};

}  // namespace

class DateFormatter::Pattern {
  public:
    Pattern(std::string_view dateFormat, const std::string& localeIdentifier) {
        const icu::Locale locale(localeIdentifier.c_str());
        for (std::string_view rest = dateFormat; !rest.empty();) m_fields.push_back(takeField(rest));
        m_direct = std::all_of(m_fields.begin(), m_fields.end(), isNumeric) &&
                   hasLatinDigitsAndGregorianCalendar(locale);
        if (!m_direct) makeFormatter(dateFormat, locale);
    }

    bool valid() const { return m_direct || m_formatter; }

    // A log writes many lines in a millisecond, so that each thread keeps its last text.
    void append(std::string& out, Milliseconds date) const {
        thread_local Text last;
        if (last.pattern != m_number || last.date != date) {
            const std::size_t begin = out.size();
            write(out, date);
            const std::string_view text = std::string_view(out).substr(begin);
            if (text.size() > last.characters.size()) return;
            last = {m_number, date, text.size(), {}};
            text.copy(last.characters.data(), text.size());
        } else {
            out.append(last.characters.data(), last.size);
        }
    }

  private:
    struct Text {  // needs no destruction: threads log to their very end
        std::uint64_t pattern = 0;
        Milliseconds date;
        std::size_t size = 0;
        std::array<char, 40> characters;
    };

    void write(std::string& out, Milliseconds date) const {
        if (!m_direct) return appendFormatted(out, date);
        const LocalTime local(date + zoneOffset(date));
        for (const Field& field : m_fields) local.append(out, field);
    }

    static std::uint64_t nextNumber() {
        static std::atomic<std::uint64_t> last{0};
        return ++last;
    }

    void makeFormatter(std::string_view dateFormat, const icu::Locale& locale) {
        UErrorCode status = U_ZERO_ERROR;
        const auto length = static_cast<std::int32_t>(dateFormat.size());
        const auto text = icu::UnicodeString::fromUTF8(icu::StringPiece(dateFormat.data(), length));
        m_formatter = std::make_unique<icu::SimpleDateFormat>(text, locale, status);
        icu::UnicodeString trial;  // unknown letters are only found on writing
        if (U_SUCCESS(status)) m_formatter->format(0.0, trial, nullptr, status);
        if (U_FAILURE(status)) m_formatter.reset();
    }

    void appendFormatted(std::string& out, Milliseconds date) const {
        if (!m_formatter) return;
        icu::UnicodeString text;
        const std::lock_guard lock(m_mutex);
        m_formatter->format(static_cast<UDate>(date.time_since_epoch().count()), text);
        text.toUTF8String(out);
    }

    const std::uint64_t m_number = nextNumber();  // tells patterns apart, from 1
    std::vector<Field> m_fields;
    bool m_direct = false;
    std::unique_ptr<icu::SimpleDateFormat> m_formatter;
    mutable std::mutex m_mutex;  // ICU's formatters serve one thread at a time
};

// The compiled patterns that the process keeps, for ever: threads point at their last one. A process uses a
// handful; beyond the bound patterns are compiled anew each time.
class DateFormatter::Patterns {
  public:
    using Shared = std::shared_ptr<const Pattern>;

    static Shared of(std::string_view dateFormat, const std::string& locale) {
        thread_local const Entries::value_type* last = nullptr;
        if (last != nullptr && last->first.first == dateFormat && last->first.second == locale) {
            return last->second;
        }
        static Patterns& kept = *new Patterns;
        return kept.found(std::pair(std::string(dateFormat), locale), last);
    }

  private:
    using Entries = std::map<std::pair<std::string, std::string>, Shared>;
    static constexpr std::size_t bound = 64;

    Shared found(std::pair<std::string, std::string> key, const Entries::value_type*& last) {
        std::unique_lock lock(m_mutex);
        auto entry = m_entries.find(key);
        const bool isNew = entry == m_entries.end();
        if (isNew) {
            auto pattern = std::make_shared<const Pattern>(key.first, key.second);
            if (m_entries.size() == bound) return pattern;
            entry = m_entries.emplace(std::move(key), std::move(pattern)).first;
        }
        lock.unlock();
        // Only now that the pattern is kept: the log that hears of it may write its dates by that same one.
        if (isNew && !entry->second->valid())
            reportDiagnostic("Invalid date format \"" + entry->first.first + '"');
        last = &*entry;
        return last->second;
    }

    std::mutex m_mutex;
    Entries m_entries;
};

DateFormatter::DateFormatter(std::string_view dateFormat, const Locale& locale)
    : m_pattern(Patterns::of(dateFormat, locale.identifier())) {}

std::string DateFormatter::string(Date date) const {
    std::string out;
    append(out, date);
    return out;
}

void DateFormatter::append(std::string& out, Date date) const {
    m_pattern->append(out, floor<milliseconds>(date));
}

}  // namespace torvel
