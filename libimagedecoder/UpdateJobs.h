#pragma once

#include "libimagedecoder/BitStreamReader.h"
#include "libimagedecoder/Macroblock.h"

#include <array>
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

/// Consecutive coded macroblocks that travel to a worker together: handing over a job costs as much
/// as decoding a macroblock.
struct MacroblockBatch {
    static constexpr size_t Capacity = 128;

    std::array<MacroblockJob, Capacity> m_aJobs;
    size_t m_uiJobs = 0;
};

/// The pool jobs of a decoder's updates.
///
/// A job must not throw into the pool, so its failure is kept here; an update ends on the driving
/// thread with the failure that comes first in macroblock order, after every job has finished.
/// Batches live in a deque that is reused from update to update: they stay where they are while
/// workers run, and cost no allocation once the largest update has been seen.
///
/// Thread safety: the driving thread calls everything; workers run only DecodeBatch.
class UpdateJobs {
public:
    /// Decodes one batch with the scratch memory of a worker.
    using Function = std::function<void(unsigned int)>;
    /// Makes the function for a batch.
    using Schedule = std::function<Function(MacroblockBatch&)>;

    /// Takes the pool, which may be null. When the pool has no running worker, jobs run at once on
    /// the driving thread, as worker number inPlaceWorker.
    UpdateJobs(std::unique_ptr<libthread::ThreadPool> pool, unsigned int inPlaceWorker);
    ~UpdateJobs();

    bool HasPool() const { return m_pPool != nullptr; }

    /// Runs walk, which may add jobs, and returns or throws only when every job has finished.
    /// macroblocks: how many jobs there may be, by which the size of a batch is chosen.
    /// schedule is called on the driving thread once for every batch that is full, or the last.
    /// Throws the first failure in macroblock order; a throw of walk itself comes after those of
    /// the jobs that it had added, since it stopped behind them.
    template <class Walk>
    void Run(size_t macroblocks, Walk walk, const Schedule& schedule);

    /// A record for the next job of this update. It stays valid until the next Run, and counts only
    /// once it is added.
    MacroblockJob& NewRecord();

    /// Adds the record that NewRecord returned last.
    void AddRecord();

    /// Runs decode(MacroblockJob&) for every record of a batch, keeping what it throws there.
    template <class Decode>
    void DecodeBatch(MacroblockBatch& batch, Decode decode);

    /// Calls part(i) once for every i below parts, on the driving thread and on workers that are
    /// free, and returns when all calls have ended. No jobs may be left. Throws what one of the
    /// calls has thrown, the others nevertheless made.
    void Share(size_t parts, const std::function<void(size_t)>& part);

private:
    size_t ChooseBatchJobs(size_t macroblocks) const;
    void BeginBatch();
    void SendBatch();
    void FinishAll();
    void RethrowFirstFailure();

    std::unique_ptr<libthread::ThreadPool> m_pPool;
    unsigned int m_uiInPlaceWorker;
    const Schedule* m_pSchedule = nullptr; ///< of the running update
    std::deque<MacroblockBatch> m_Batches;
    size_t m_uiBatchJobs = 0; ///< after which a batch is sent
    size_t m_uiBatchesSent = 0;
    MacroblockBatch* m_pBatch = nullptr; ///< that is being filled; null: a new one begins
    std::atomic<bool> m_bAnyFailure = false;
};

template <class Walk>
void UpdateJobs::Run(size_t macroblocks, Walk walk, const Schedule& schedule) {
    if (!m_pPool) {
        walk();
        return;
    }
    m_pSchedule = &schedule;
    m_uiBatchJobs = ChooseBatchJobs(macroblocks);
    m_uiBatchesSent = 0;
    m_pBatch = nullptr;
    std::exception_ptr walkFailure;
    try {
        walk();
    } catch (...) {
        walkFailure = std::current_exception();
    }
    FinishAll();
    if (walkFailure)
        std::rethrow_exception(walkFailure);
}

template <class Decode>
void UpdateJobs::DecodeBatch(MacroblockBatch& batch, Decode decode) {
    for (size_t i = 0; i < batch.m_uiJobs; ++i) {
        MacroblockJob& record = batch.m_aJobs[i];
        try {
            decode(record);
        } catch (...) {
            record.m_pFailure = std::current_exception();
            m_bAnyFailure = true;
        }
        record.m_puiOwned.reset();
    }
}

} // namespace Vostrel::libimagedecoder
