#include "bench/comparison/Rounds.h"

#include <algorithm>
#include <utility>

namespace Vostrel::bench {

namespace {

constexpr double ShortestTurn = 1e6; // ns

} // namespace

double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

size_t Rounds::Add(std::function<void()> work, size_t pieces, std::function<void()> prepare) {
    m_vContestants.push_back(
        {std::move(work), std::move(prepare), static_cast<double>(pieces), 1, {}});
    return m_vContestants.size() - 1;
}

double Rounds::Time(Contestant& contestant) const {
    if (contestant.m_prepare)
        contestant.m_prepare();
    const int64_t start = Now(m_clock);
    for (unsigned i = 0; i < contestant.m_uiRepeats; ++i)
        contestant.m_work();
    const auto elapsed = static_cast<double>(Now(m_clock) - start);
    return elapsed / (contestant.m_fPieces * contestant.m_uiRepeats);
}

void Rounds::Run() {
    PinCallingThread(m_settings.m_iCore);
    for (Contestant& contestant : m_vContestants) {
        Time(contestant);
        const double turn = std::max(Time(contestant) * contestant.m_fPieces, 1.0);
        contestant.m_uiRepeats = 1 + static_cast<unsigned>(ShortestTurn / turn);
    }
    const size_t count = m_vContestants.size();
    for (unsigned round = 0; round < m_settings.m_uiRounds; ++round) {
        for (size_t i = 0; i < count; ++i) {
            Contestant& contestant = m_vContestants[(round + i) % count];
            contestant.m_vfTimes.push_back(Time(contestant));
        }
    }
}

double Rounds::Speedup(size_t work, size_t peer) const {
    const std::vector<double>& times = m_vContestants[work].m_vfTimes;
    const std::vector<double>& peerTimes = m_vContestants[peer].m_vfTimes;
    std::vector<double> ratios;
    for (size_t i = 0; i < times.size(); ++i)
        ratios.push_back(peerTimes[i] / times[i]);
    return Median(std::move(ratios));
}

} // namespace Vostrel::bench
