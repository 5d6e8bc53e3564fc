#include "TorvelPlatform/foundation/Predicate.h"

#include "TorvelPlatform/foundation/Diagnostics.h"
#include "TorvelPlatform/foundation/Text.h"
#include "TorvelPlatform/foundation/UnicodeText.h"

#include <atomic>
#include <mutex>

#include <unicode/regex.h>

namespace torvel {
namespace {

// Counted in ten thousand steps of the engine, not on a clock: a result does not depend on the machine.
constexpr std::int32_t timeLimit = 1000;

void report(const char* fault, const std::string& pattern, UErrorCode error) {
    reportDiagnostic(std::string(fault) + " regular expression \"" + pattern + "\": " + u_errorName(error));
}

}  // namespace

struct Predicate::Pattern {
    using Matcher = std::unique_ptr<icu::RegexMatcher>;

    explicit Pattern(const std::string& pattern) : text(pattern) {
        UErrorCode error = U_ZERO_ERROR;
        UParseError place{};
        compiled.reset(icu::RegexPattern::compile(unicodeText(text), 0, place, error));
        if (U_SUCCESS(error)) return;
        compiled.reset();
        fault = std::string(u_errorName(error)) + " at character " + std::to_string(place.offset);
        report("Invalid", text, error);
    }
    ~Pattern() { keep(nullptr); }

    Matcher matcher(UErrorCode& error) const {
        if (Matcher kept{spare.exchange(nullptr)}) return kept;
        Matcher made(compiled->matcher(error));
        if (U_SUCCESS(error)) made->setTimeLimit(timeLimit, error);
        return made;
    }
    void keep(Matcher matcher) const { Matcher(spare.exchange(matcher.release())); }

    Verdict judge(std::string_view with, UErrorCode& error) const {
        if (!compiled) return Verdict::gaveUp;
        const icu::UnicodeString input = unicodeText(with);
        Matcher made = matcher(error);
        const bool matches = U_SUCCESS(error) && made->reset(input).matches(error);
        if (U_FAILURE(error)) return Verdict::gaveUp;
        const Verdict verdict = matches          ? Verdict::matches
                                : made->hitEnd() ? Verdict::wantsMore
                                                 : Verdict::differs;
        keep(std::move(made));
        return verdict;
    }

    const std::string text;
    std::unique_ptr<const icu::RegexPattern> compiled;  // absent when invalid; serves any thread
    std::optional<std::string> fault;                   // why it is
    // A matcher serves one thread at a time, and making one takes longer than most matches.
    mutable std::atomic<icu::RegexMatcher*> spare{nullptr};
};

// The compiled patterns that the process keeps. Tables hold a few dozens; a process that makes patterns up
// starts over at the bound.
class Predicate::Patterns {
  public:
    std::shared_ptr<const Pattern> of(std::string_view text) {
        const std::lock_guard lock(m_mutex);
        if (const auto known = m_patterns.find(text); known != m_patterns.end()) return known->second;
        if (m_patterns.size() == bound) m_patterns.clear();
        const std::string key(text);
        return m_patterns.emplace(key, std::make_shared<const Pattern>(key)).first->second;
    }

  private:
    static constexpr std::size_t bound = 128;

    std::mutex m_mutex;
    ByText<std::shared_ptr<const Pattern>> m_patterns;
};

Predicate Predicate::matches(std::string_view pattern) {
    static Patterns& kept = *new Patterns;  // usable until the very end
    // Most texts are checked again and again while they are typed.
    thread_local std::shared_ptr<const Pattern> last;
    if (!last || last->text != pattern) last = kept.of(pattern);
    return Predicate(last);
}

bool Predicate::evaluate(std::string_view with) const {
    UErrorCode error = U_ZERO_ERROR;
    const Verdict verdict = m_pattern->judge(with, error);
    if (U_FAILURE(error)) report("Gave up the", m_pattern->text, error);
    return verdict == Verdict::matches;
}

Predicate::Verdict Predicate::judge(std::string_view text) const {
    UErrorCode error = U_ZERO_ERROR;
    return m_pattern->judge(text, error);
}

const std::optional<std::string>& Predicate::fault() const { return m_pattern->fault; }

}  // namespace torvel
