#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace torvel {

// The predicate "SELF MATCHES <pattern>": a regular expression of ICU that must match a text from its first
// to its last character. Nothing is trimmed, folded or normalised before.
//
// A cheap value over a compiled pattern that the process keeps, so that making one for every text costs a
// look-up. Safe from any thread.
class Predicate {
  public:
    // An invalid pattern is reported to the diagnostics when it is compiled, and matches nothing.
    static Predicate matches(std::string_view pattern);

    // A match that takes too many steps (about a tenth of a second) or too much memory, as a pattern that
    // backtracks without end does, is given up, reported to the diagnostics and false.
    bool evaluate(std::string_view with) const;

    // How a match ended.
    enum class Verdict {
        matches,    // the whole text
        differs,    // not, and no longer text that begins so does
        wantsMore,  // differs, having looked for more text than there is: a longer one may match
        gaveUp,     // too many steps or too much memory, or the pattern is invalid
    };
    // What evaluate() finds, in more words and without a report.
    Verdict judge(std::string_view text) const;
    // What is wrong with the pattern, and where; absent when it is valid.
    std::optional<std::string> fault() const;

  private:
    struct Pattern;
    class Patterns;
    explicit Predicate(std::shared_ptr<const Pattern> pattern) : m_pattern(std::move(pattern)) {}
    std::shared_ptr<const Pattern> m_pattern;
};

}  // namespace torvel
