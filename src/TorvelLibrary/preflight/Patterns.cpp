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

    std::optional<std::string> probe() const {
        for (const char run : m_alphabet) {
            std::string text;
            while (text.size() < runLength && extend(text, run)) {
            }
            text += spoiler;
            if (m_predicate.judge(text) == Verdict::gaveUp) return text;
        }
        return std::nullopt;
    }

  private:
    bool extend(std::string& text, char run) const {
        if (isWanted(text + run)) return text += run, true;
        const auto next = std::ranges::find_if(m_alphabet, [&](char c) { return isWanted(text + c); });
        if (next == m_alphabet.end()) return false;
        text += *next;
        return true;
    }

    bool isWanted(const std::string& text) const {
        const Verdict verdict = m_predicate.judge(text);
        return verdict == Verdict::wantsMore || verdict == Verdict::matches;
    }

    Predicate m_predicate;
    std::string m_alphabet;
};

}  // namespace

std::optional<std::string> endlessProbe(const std::string& pattern) { return Prober(pattern).probe(); }

}  // namespace torvel::preflight
