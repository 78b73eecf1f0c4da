#pragma once

#include "libimagedecoder/BitStreamReader.h"
#include "libimagedecoder/Macroblock.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <memory>

namespace Vostrel::libthread {
class ThreadPool;
}

namespace Vostrel::libimagedecoder {

/// One macroblock that is decoded apart from the stream, from its own copy of its bytes.
struct MacroblockJob {
    Macroblock m_Macroblock{};
    uint8_t* m_puiSegment = nullptr;       ///< bytes that the reader held, copied bytes, then zeros
    size_t m_uiHeldBytes = 0;              ///< where the copied bytes start
    size_t m_uiSegmentBytes = 0;           ///< of all three together
    std::unique_ptr<uint8_t[]> m_puiOwned; ///< holds the segment when the store had no room
    BitReaderState m_ReaderState;          ///< bits that the stream's reader had fetched already
    std::exception_ptr m_pFailure;         ///< what the job threw, for the driving thread
};

/// The pool jobs of a decoder's updates.
///
/// A job must not throw into the pool, so its failure is kept here; an update ends on the driving
/// thread with the failure that comes first in macroblock order, after every job has finished.
/// Job records live in a deque that is reused from update to update: they stay where they are while
/// workers run, and cost no allocation once the largest update has been seen.
///
/// Thread safety: the driving thread calls everything; workers run only what Guarded wraps.
class UpdateJobs {
public:
    /// Decodes one job's macroblock with the scratch memory of a worker.
    using Function = std::function<void(unsigned int)>;

    /// Takes the pool, which may be null. When the pool has no running worker, jobs run at once on
    /// the driving thread, as worker number inPlaceWorker.
    UpdateJobs(std::unique_ptr<libthread::ThreadPool> pool, unsigned int inPlaceWorker);
    ~UpdateJobs();

    bool HasPool() const { return m_pPool != nullptr; }

    /// Runs walk, which may add jobs, and returns or throws only when every job has finished.
    /// Throws the first failure in macroblock order; a throw of walk itself comes after those of
    /// the jobs that it had added, since it stopped behind them.
    template <class Walk>
    void Run(Walk walk);

    /// A record for the next job of this update. It stays valid until the next Run.
    MacroblockJob& NewRecord();

    /// Queues a job for the macroblock of record.
    void Add(Function job);

    /// Runs decode(), keeping what it throws in the record.
    template <class Decode>
    void Guarded(MacroblockJob& record, Decode decode);

private:
    void WaitForAll();
    void RethrowFirstFailure();

    std::unique_ptr<libthread::ThreadPool> m_pPool;
    unsigned int m_uiInPlaceWorker;
    std::deque<MacroblockJob> m_Records;
    size_t m_uiRecordsUsed = 0;
    std::atomic<bool> m_bAnyFailure = false;
};

template <class Walk>
void UpdateJobs::Run(Walk walk) {
    m_uiRecordsUsed = 0;
    std::exception_ptr walkFailure;
    try {
        walk();
    } catch (...) {
        walkFailure = std::current_exception();
    }
    WaitForAll();
    RethrowFirstFailure();
    if (walkFailure)
        std::rethrow_exception(walkFailure);
}

template <class Decode>
void UpdateJobs::Guarded(MacroblockJob& record, Decode decode) {
    try {
        decode();
    } catch (...) {
        record.m_pFailure = std::current_exception();
        m_bAnyFailure = true;
    }
    record.m_puiOwned.reset();
}

} // namespace Vostrel::libimagedecoder
