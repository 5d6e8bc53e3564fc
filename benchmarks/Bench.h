#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// What every benchmark program shares: rounds in which the sides take turns, and the lines of the report.
namespace torvel::bench {

enum class Clock {
    thread,   // CPU time of the calling thread
    process,  // CPU time of all threads
    wall,
};
double seconds(Clock clock);

// One side of a comparison: does its work `times` times over.
using Side = std::function<void(std::size_t times)>;

template <class Work>
Side repeating(Work work) {
    return [work = std::move(work)](std::size_t times) mutable {
        for (; times > 0; --times) work();
    };
}

// Makes the compiler believe that somebody reads the value.
template <class T>
void keep(const T& value) {
    asm volatile("" : : "g"(&value) : "memory");
}

double median(std::vector<double> values);

// The times of sides that took turns. Every round each side runs once, in an order that moves on by one.
class Rounds {
  public:
    // `times` holds, round by round, the seconds of one call of each side.
    explicit Rounds(std::vector<std::vector<double>> times) : m_times(std::move(times)) {}

    // Seconds of one call.
    double time(std::size_t side) const;
    // Median over the rounds of the ratio within each, which a change of the machine's pace leaves alone.
    double ratio(std::size_t side, std::size_t over) const;

  private:
    std::vector<std::vector<double>> m_times;
};

struct Pace {
    Clock clock = Clock::thread;
    std::size_t rounds = 11;                // at least 7
    double turn = 0.004;                    // seconds that a side runs in a round, about
    std::function<double()> ownClock = {};  // in seconds, instead of the clock
};

// Finds out how often a side must run to fill a turn, which also warms it, and then runs the rounds.
Rounds takeTurns(const std::vector<Side>& sides, const Pace& pace = {});

// Prints the lines that tools/bench collects:
//   TIME <subject>/<case> <side> <value> <unit>
//   RATIO <subject>/<case> <value> goal <bound> ok|short
class Report {
  public:
    explicit Report(std::string subject) : m_subject(std::move(subject)) {}

    // Good when small: our time over the peer's.
    void atMost(std::string_view name, double value, double bound);
    // Good when large: the name says so ("peer-over-ours", "share-of-...").
    void atLeast(std::string_view name, double value, double bound);
    void time(std::string_view name, std::string_view side, double seconds) const;
    // Anything else worth reading beside the figures: `NOTE <subject> <text>`.
    void note(std::string_view text) const;

    // What main returns: 0 when no line fell short.
    int exitCode() const { return m_short ? 1 : 0; }

  private:
    void line(std::string_view name, double value, double bound, bool ok);

    std::string m_subject;
    bool m_short = false;
};

// Lets memory of large texts come back from the heap, for every side: fresh pages cost more than the work.
void keepFreedMemory();

// The value that the program cannot go on without, or the end of it with exit code 2.
[[noreturn]] void giveUp(std::string_view why);

}  // namespace torvel::bench
