#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <initializer_list>
#include <string>
#include <thread>

namespace Vostrel::rctool {

/// rctool as a child that can get signals while it works.
class ChildProgram {
public:
    /// arguments: a shell's, redirections among them. Signals do what they do by default, but for
    /// those to be ignored.
    explicit ChildProgram(const std::string& arguments, std::initializer_list<int> ignored = {}) {
        const std::string command = "exec " RCTOOL_PATH " " + arguments;
        m_pid = fork();
        if (m_pid != 0)
            return;
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGPIPE})
            signal(number, SIG_DFL);
        for (const int number : ignored)
            signal(number, SIG_IGN);
        execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        _exit(127);
    }
    ~ChildProgram() {
        if (m_pid > 0) {
            Signal(SIGKILL);
            Wait();
        }
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    void Signal(int number) const { kill(m_pid, number); }

    /// Returns the exit status, or minus the signal that killed it.
    int Wait() {
        int status = 0;
        waitpid(m_pid, &status, 0);
        m_pid = 0;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

private:
    pid_t m_pid;
};

/// Waits, for at most half a minute, until a condition holds. Returns whether it does.
template <class Condition>
bool WaitUntil(Condition condition) {
    for (int i = 0; i < 3000 && !condition(); ++i)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    return condition();
}

/// The writing end of a FIFO, once another program waits at the other end.
class FifoWriter {
public:
    explicit FifoWriter(const std::string& path) {
        WaitUntil([&] { return m_descriptor >= 0 || Open(path); });
    }
    ~FifoWriter() { close(m_descriptor); }
    FifoWriter(const FifoWriter&) = delete;
    FifoWriter& operator=(const FifoWriter&) = delete;

    bool IsOpen() const { return m_descriptor >= 0; }

private:
    bool Open(const std::string& path) {
        m_descriptor = open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
        return IsOpen();
    }

    int m_descriptor = -1;
};

} // namespace Vostrel::rctool
