#include "Bench.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include <malloc.h>
#include <time.h>

namespace torvel::bench {
namespace {

double timed(const Side& side, std::size_t times, const Pace& pace) {
    const auto now = [&pace] { return pace.ownClock ? pace.ownClock() : seconds(pace.clock); };
    const double start = now();
    side(times);
    return now() - start;
}

// Doubles until a turn takes long enough to be told from the clock's own grain, then scales.
std::size_t timesInATurn(const Side& side, const Pace& pace) {
    for (std::size_t times = 1;; times *= 2) {
        const double took = timed(side, times, pace);
        if (took >= pace.turn) return times;
        if (took >= pace.turn / 8)
            return static_cast<std::size_t>(static_cast<double>(times) * pace.turn / took);
    }
}

}  // namespace

double seconds(Clock clock) {
    const clockid_t id = clock == Clock::thread    ? CLOCK_THREAD_CPUTIME_ID
                         : clock == Clock::process ? CLOCK_PROCESS_CPUTIME_ID
                                                   : CLOCK_MONOTONIC;
    timespec now{};
    clock_gettime(id, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

double median(std::vector<double> values) {
    if (values.empty()) giveUp("a median of no values");
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    if (values.size() % 2 == 1) return *middle;
    return (*middle + *std::max_element(values.begin(), middle)) / 2;
}

double Rounds::time(std::size_t side) const {
    std::vector<double> values;
    for (const auto& round : m_times) values.push_back(round[side]);
    return median(std::move(values));
}

double Rounds::ratio(std::size_t side, std::size_t over) const {
    std::vector<double> values;
    for (const auto& round : m_times) values.push_back(round[side] / round[over]);
    return median(std::move(values));
}

Rounds takeTurns(const std::vector<Side>& sides, const Pace& pace) {
    if (pace.rounds < 7) giveUp("a median needs seven rounds");
    std::vector<std::size_t> times;
    for (const Side& side : sides) {
        side(1);  // what happens only once shall not make the turns short
        times.push_back(timesInATurn(side, pace));
    }
    std::vector<std::vector<double>> rounds(pace.rounds, std::vector<double>(sides.size()));
    for (std::size_t round = 0; round < pace.rounds; ++round) {
        for (std::size_t turn = 0; turn < sides.size(); ++turn) {
            const std::size_t i = (round + turn) % sides.size();
            rounds[round][i] = timed(sides[i], times[i], pace) / static_cast<double>(times[i]);
        }
    }
    return Rounds(std::move(rounds));
}

void Report::atMost(std::string_view name, double value, double bound) {
    line(name, value, bound, value <= bound);
}

void Report::atLeast(std::string_view name, double value, double bound) {
    line(name, value, bound, value >= bound);
}

void Report::line(std::string_view name, double value, double bound, bool ok) {
    m_short |= !ok;
    std::printf("RATIO %s/%.*s %.4g goal %g %s\n", m_subject.c_str(), static_cast<int>(name.size()),
                name.data(), value, bound, ok ? "ok" : "short");
    std::fflush(stdout);
}

void Report::time(std::string_view name, std::string_view side, double seconds) const {
    struct Unit {
        double seconds;
        const char* name;
    };
    constexpr Unit units[] = {{1, "s"}, {1e-3, "ms"}, {1e-6, "us"}, {1e-9, "ns"}};
    const Unit* unit = units;
    while (seconds < unit->seconds && unit != std::end(units) - 1) ++unit;
    std::printf("TIME %s/%.*s %.*s %.3g %s\n", m_subject.c_str(), static_cast<int>(name.size()), name.data(),
                static_cast<int>(side.size()), side.data(), seconds / unit->seconds, unit->name);
}

void Report::note(std::string_view text) const {
    std::printf("NOTE %s %.*s\n", m_subject.c_str(), static_cast<int>(text.size()), text.data());
}

void keepFreedMemory() {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
}

void giveUp(std::string_view why) {
    std::fprintf(stderr, "bench: %.*s\n", static_cast<int>(why.size()), why.data());
    std::exit(2);
}

}  // namespace torvel::bench
