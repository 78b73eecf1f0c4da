#include "tools/rctool/Progress.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

namespace Vostrel::rctool {

namespace {

constexpr auto TimeBetweenLines = std::chrono::milliseconds(100);

} // namespace

Progress::Progress(std::string command, std::string noun, size_t total, bool shown)
    : m_command(std::move(command)), m_noun(std::move(noun)), m_uiTotal(total),
      m_bShown(shown && isatty(STDERR_FILENO) != 0) {}

Progress::~Progress() {
    Clear();
}

void Progress::Step() {
    ++m_uiNumber;
    if (!m_bShown || Clock::now() < m_nextTime)
        return;
    Show();
    m_nextTime = Clock::now() + TimeBetweenLines;
}

void Progress::Clear() {
    if (m_uiWidth == 0)
        return;
    std::fflush(stdout);
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(std::exchange(m_uiWidth, 0)), "");
    std::fflush(stderr);
    m_nextTime = {};
}

void Progress::Show() {
    std::string line = "rctool: " + m_command + ": " + m_noun + " " + std::to_string(m_uiNumber);
    if (m_uiTotal != 0)
        line += " of " + std::to_string(m_uiTotal);
    std::fprintf(stderr, "\r%s", line.c_str());
    std::fflush(stderr);
    m_uiWidth = line.size(); // Numbers only grow, so it covers the line before.
}

} // namespace Vostrel::rctool
