// A script of adds, waits and joins: every job runs exactly once, or never once the pool has been
// joined without waiting.

#include "fuzz/FuzzCheck.h"
#include "fuzz/FuzzInput.h"
#include "libthread/ThreadPool.h"

#include <array>
#include <atomic>
#include <deque>
#include <functional>
#include <memory>
#include <sched.h>
#include <vector>

namespace Vostrel::fuzz {
namespace {

using libthread::ThreadPool;
using Job = std::function<void(unsigned int)>;

constexpr unsigned MaxThreads = 4;

/// A pool with the fuzzer as its owner.
class Script {
public:
    Script(ThreadPool& pool, unsigned threads) : m_Pool(pool), m_uiThreads(threads) {}

    /// Scripts of a pool that is used again must not join it.
    void Run(FuzzInput& input, bool mayJoin) {
        for (int steps = 0; steps < 40 && !input.IsEmpty(); ++steps) {
            const unsigned step = input.Byte();
            switch (step % 8) {
            case 4:
                Wait();
                break;
            case 5:
                AddStack(step / 8 % 8);
                break;
            case 6:
                if (mayJoin)
                    JoinAfterAll();
                break;
            case 7:
                if (mayJoin)
                    JoinAtOnce();
                break;
            default:
                for (unsigned jobs = step / 8 % 4; jobs < 4; ++jobs)
                    Add(step / 32);
            }
        }
        Finish(mayJoin);
    }

    /// After the pool's end: what it was to run has run.
    void CheckAfterPool() const {
        if (m_State != State::JoinedAtOnce)
            CheckAllRan();
    }

private:
    enum class State { Running, Joined, JoinedAtOnce };

    void Add(unsigned yields) {
        std::atomic<int>& runs = m_Runs.emplace_back(0);
        AddJob([this, &runs, yields](unsigned int worker) {
            Check(worker < m_uiThreads, "a job gets the index of no worker");
            for (unsigned i = 0; i < yields; ++i)
                sched_yield();
            ++runs;
        });
    }

    void AddJob(Job job) {
        m_Pool.addJob(job);
        Check((job != nullptr) == (m_State != State::Running), "a job stays or goes wrongly");
        if (m_State != State::Running)
            m_Runs.pop_back();
    }

    /// With one worker the job added last runs first.
    void AddStack(unsigned jobs) {
        if (m_State != State::Running || m_uiThreads != 1)
            return;
        Wait();
        std::atomic<bool> started = false;
        std::atomic<bool> released = false;
        std::vector<unsigned> order;
        m_Runs.emplace_back(1);
        AddJob([&](unsigned int) {
            for (started = true; !released;)
                sched_yield();
        });
        while (!started)
            sched_yield();
        for (unsigned i = 0; i < jobs; ++i) {
            m_Runs.emplace_back(1);
            AddJob([&order, i](unsigned int) { order.push_back(i); });
        }
        released = true;
        Wait();
        Check(order.size() == jobs, "stacked jobs are lost");
        for (unsigned i = 0; i < jobs; ++i)
            Check(order[i] == jobs - 1 - i, "stacked jobs run in another order");
    }

    /// Without workers, or with jobs that a join left behind, there is nothing to wait for.
    bool CanWait() const {
        return m_Runs.empty() || (m_uiThreads > 0 && m_State != State::JoinedAtOnce);
    }

    void Wait() {
        if (!CanWait())
            return;
        m_Pool.waitAll();
        CheckAllRan();
    }

    void JoinAfterAll() {
        if (!CanWait())
            return;
        m_Pool.joinAll(true);
        if (m_State == State::Running)
            m_State = State::Joined;
        CheckAllRan();
    }

    void JoinAtOnce() {
        m_Pool.joinAll(false);
        if (m_State == State::Running)
            m_State = State::JoinedAtOnce;
        for (const std::atomic<int>& runs : m_Runs)
            Check(runs <= 1, "a job runs twice");
    }

    /// A pool without workers cannot be destroyed with jobs in it.
    void Finish(bool mayJoin) {
        if (!mayJoin)
            Wait();
        else if (!CanWait())
            JoinAtOnce();
    }

    void CheckAllRan() const {
        for (const std::atomic<int>& runs : m_Runs)
            Check(runs == 1, "a job does not run exactly once");
    }

    ThreadPool& m_Pool;
    unsigned m_uiThreads;
    State m_State = State::Running;
    std::deque<std::atomic<int>> m_Runs;
};

ThreadPool& LastingPool(unsigned threads) {
    static std::array<std::unique_ptr<ThreadPool>, MaxThreads + 1> pools;
    if (!pools[threads])
        pools[threads] = std::make_unique<ThreadPool>(threads);
    return *pools[threads];
}

} // namespace
} // namespace Vostrel::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace Vostrel::fuzz;
    FuzzInput input(data, size);
    const unsigned threads = input.Below(MaxThreads + 1);
    // Threads cost far more than jobs.
    if (threads > 0 && input.Byte() < 252) {
        Script(LastingPool(threads), threads).Run(input, false);
        return 0;
    }
    auto pool = std::make_unique<Vostrel::libthread::ThreadPool>(threads);
    Script script(*pool, threads);
    script.Run(input, true);
    pool.reset();
    script.CheckAfterPool();
    return 0;
}
