#pragma once

#include "bench/comparison/Clocks.h"

#include <cstddef>
#include <functional>
#include <vector>

namespace Vostrel::bench {

/// How to measure: the same for all rows of one run.
struct RoundSettings {
    unsigned m_uiRounds = 21;
    int m_iCore = 0;
    int m_iSecondCore = 1; ///< for the work of two workers
};

/// Median of values, which must not be empty.
double Median(std::vector<double> values);

/// Several pieces of work that take turns. In every round each of them is timed once, starting with
/// another one each time; so a slow moment of the machine meets all of them, and the ratio of two
/// times of the same round tells more than the ratio of two averages.
///
/// Work that is done in less than a millisecond is repeated within a turn until it has lasted about
/// that long. An untimed round comes first.
class Rounds {
public:
    explicit Rounds(const RoundSettings& settings, Clock clock = Clock::ThreadTime)
        : m_settings(settings), m_clock(clock) {}

    /// Adds work that consists of `pieces` equal parts, updates say; times are those of one part.
    /// prepare, if there is one, runs untimed before the work. Returns the work's number.
    size_t Add(std::function<void()> work, size_t pieces = 1, std::function<void()> prepare = {});

    void Run();

    /// Median over the rounds of the nanoseconds that a piece of the work took.
    double Nanoseconds(size_t work) const { return Median(m_vContestants[work].m_vfTimes); }

    /// Median over the rounds of how many times as long as `work` the `peer` took.
    double Speedup(size_t work, size_t peer) const;

private:
    struct Contestant {
        std::function<void()> m_work;
        std::function<void()> m_prepare;
        double m_fPieces;
        unsigned m_uiRepeats = 1;
        std::vector<double> m_vfTimes; ///< of one piece, one entry per round
    };

    double Time(Contestant& contestant) const;

    RoundSettings m_settings;
    Clock m_clock;
    std::vector<Contestant> m_vContestants;
};

} // namespace Vostrel::bench
