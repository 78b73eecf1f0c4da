#pragma once

#include <limits>
#include <string>
#include <vector>

namespace Vostrel::bench {

/// What a row of the comparison wants: a value to reach, and one that would be splendid. The
/// default is a figure without a goal, told for what it says.
struct Goal {
    static constexpr double None = std::numeric_limits<double>::quiet_NaN();

    double m_fReach = None;
    double m_fMoonshot = None;
    bool m_bHigherIsBetter = true;
};

/// One measured figure.
struct Figure {
    unsigned m_uiRow;      ///< number of the row that it belongs to
    std::string m_work;    ///< what was decoded or done
    std::string m_measure; ///< unit of the value: "x tj default", "us", ...
    double m_fValue;
    Goal m_goal;
    double m_fNanoseconds = Goal::None;     ///< what our work took
    double m_fPeerNanoseconds = Goal::None; ///< what the peer took
    double m_fBitsPerPixel = Goal::None;
    double m_fPeerBitsPerPixel = Goal::None;
};

/// Collects the figures; prints each one as it comes, so that a long run shows its progress.
class Report {
public:
    void PrintHeading() const;
    void Add(const Figure& figure);

    /// Writes everything to a file of comma-separated values. Throws std::runtime_error.
    void WriteCsv(const std::string& path) const;

private:
    std::vector<Figure> m_vFigures;
};

} // namespace Vostrel::bench
