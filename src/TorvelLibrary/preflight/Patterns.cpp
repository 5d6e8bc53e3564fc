#include "TorvelLibrary/preflight/Patterns.h"

#include "TorvelPlatform/foundation/Predicate.h"

#include <algorithm>
#include <string_view>

namespace torvel::preflight {
namespace {

using Verdict = Predicate::Verdict;

constexpr std::size_t runLength = 40;
// What no sensible pattern wants next: it is what makes the engine try every other way.
constexpr char spoiler = '\x01';

// The characters to try: those of the pattern, and one of each common class.
std::string alphabetOf(const std::string& pattern) {
    std::string letters = "aA0 .-_@,/";
    std::copy_if(pattern.begin(), pattern.end(), std::back_inserter(letters),
                 [](char c) { return c > ' ' && c < '\x7F'; });
    std::sort(letters.begin() + 3, letters.end());
    letters.erase(std::unique(letters.begin() + 3, letters.end()), letters.end());
    return letters;
}

// Grows texts that the pattern wants more of, one character at a time, with as many as possible of `run`.
class Prober {
  public:
    explicit Prober(const std::string& pattern)
        : m_predicate(Predicate::matches(pattern)), m_alphabet(alphabetOf(pattern)) {}

    // Ends with the first text that the engine gives up on, for each of them takes it a tenth of a second.
    std::optional<std::string> probe() {
        for (const char run : m_alphabet) {
            std::string text;
            while (text.size() < runLength && extend(text, run)) continue;
            isWanted(text + spoiler);
            if (m_endless) break;
        }
        return m_endless;
    }

  private:
    bool extend(std::string& text, char run) {
        if (isWanted(text + run)) return text += run, true;
        const auto next = std::ranges::find_if(m_alphabet, [&](char c) { return isWanted(text + c); });
        if (next == m_alphabet.end()) return false;
        text += *next;
        return true;
    }

    bool isWanted(const std::string& text) {
        if (m_endless) return false;
        const Verdict verdict = m_predicate.judge(text);
        if (verdict == Verdict::gaveUp) m_endless = text;
        return verdict == Verdict::wantsMore || verdict == Verdict::matches;
    }

    Predicate m_predicate;
    std::string m_alphabet;
    std::optional<std::string> m_endless;
};

}  // namespace

std::optional<std::string> endlessProbe(const std::string& pattern) { return Prober(pattern).probe(); }

}  // namespace torvel::preflight
