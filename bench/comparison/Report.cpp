#include "bench/comparison/Report.h"

#include <cmath>
#include <cstdio>
#include <fstream>
#include <stdexcept>

namespace Vostrel::bench {

namespace {

bool Meets(double value, double bound, bool higherIsBetter) {
    return higherIsBetter ? value >= bound : value <= bound;
}

const char* Verdict(const Figure& figure) {
    const Goal& goal = figure.m_goal;
    if (Meets(figure.m_fValue, goal.m_fMoonshot, goal.m_bHigherIsBetter))
        return "moonshot";
    if (Meets(figure.m_fValue, goal.m_fReach, goal.m_bHigherIsBetter))
        return "reached";
    return std::isnan(goal.m_fReach) ? "" : "missed";
}

/// Nothing for a number that there is not.
std::string Text(double value, const char* format) {
    if (std::isnan(value))
        return "";
    char text[32];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

std::string Microseconds(double nanoseconds) {
    return Text(nanoseconds / 1000, nanoseconds < 100'000 ? "%.2f" : "%.0f");
}

} // namespace

void Report::PrintHeading() const {
    std::printf("%3s  %-42s %8s %-24s %6s %6s %-8s %9s %9s %6s %6s\n", "row", "work", "value",
                "measure", "reach", "moon", "", "us", "peer us", "bpp", "peer");
}

void Report::Add(const Figure& figure) {
    m_vFigures.push_back(figure);
    std::printf("%3u  %-42s %8s %-24s %6s %6s %-8s %9s %9s %6s %6s\n", figure.m_uiRow,
                figure.m_work.c_str(), Text(figure.m_fValue, "%.3g").c_str(),
                figure.m_measure.c_str(), Text(figure.m_goal.m_fReach, "%g").c_str(),
                Text(figure.m_goal.m_fMoonshot, "%g").c_str(), Verdict(figure),
                Microseconds(figure.m_fNanoseconds).c_str(),
                Microseconds(figure.m_fPeerNanoseconds).c_str(),
                Text(figure.m_fBitsPerPixel, "%.2f").c_str(),
                Text(figure.m_fPeerBitsPerPixel, "%.2f").c_str());
    std::fflush(stdout);
}

void Report::WriteCsv(const std::string& path) const {
    std::ofstream file(path);
    file << "row,work,measure,value,reach,moonshot,verdict,ns,peer_ns,bits_per_pixel,"
            "peer_bits_per_pixel\n";
    for (const Figure& figure : m_vFigures) {
        file << figure.m_uiRow << ",\"" << figure.m_work << "\",\"" << figure.m_measure << "\","
             << Text(figure.m_fValue, "%.4g") << ',' << Text(figure.m_goal.m_fReach, "%g") << ','
             << Text(figure.m_goal.m_fMoonshot, "%g") << ',' << Verdict(figure) << ','
             << Text(figure.m_fNanoseconds, "%.1f") << ','
             << Text(figure.m_fPeerNanoseconds, "%.1f") << ','
             << Text(figure.m_fBitsPerPixel, "%.4f") << ','
             << Text(figure.m_fPeerBitsPerPixel, "%.4f") << '\n';
    }
    file.close();
    if (!file)
        throw std::runtime_error("Cannot write " + path);
}

} // namespace Vostrel::bench
