#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace Vostrel::rctool {

/// Shows on the error output how far a long command is: "rctool: decode: update 3 of 12". Only on a
/// terminal, in one line that is gone at the end.
class Progress {
public:
    /// command: the subcommand. noun: what it counts, "update" for example. total: how many there
    /// are, 0 if that is not known. shown: false for a command that is to be quiet.
    Progress(std::string command, std::string noun, size_t total, bool shown = true);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// The next one begins.
    void Step();

    /// Makes room for other output on the terminal. The next step shows the line again.
    void Clear();

private:
    using Clock = std::chrono::steady_clock;

    void Show();

    std::string m_command;
    std::string m_noun;
    size_t m_uiTotal;
    bool m_bShown;
    size_t m_uiNumber = 0;
    size_t m_uiWidth = 0; ///< characters of the line on the terminal
    Clock::time_point m_nextTime{};
};

} // namespace Vostrel::rctool
