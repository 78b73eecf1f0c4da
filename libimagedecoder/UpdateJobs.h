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

/// The bytes of one macroblock, which are decoded apart from the stream.
struct MacroblockRecord {
    Macroblock m_Macroblock{};
    uint8_t* m_puiBytes = nullptr; ///< from the first bit on, then zeros
    size_t m_uiBytes = 0;
    uint32_t m_uiFirstBit = 0;             ///< where the macroblock starts in the first byte, 0..7
    std::unique_ptr<uint8_t[]> m_puiOwned; ///< holds the bytes when the store had no room
    std::exception_ptr m_pFailure;         ///< what decoding threw, for the driving thread
};

/// Records that travel to a worker together: handing over a job costs as much as decoding a
/// macroblock.
struct RecordBatch {
    static constexpr size_t Capacity = 128;

    std::array<MacroblockRecord, Capacity> m_aRecords;
    size_t m_uiRecords = 0;
};

/// The pool jobs of a decoder's updates. A job decodes one batch.
///
/// A job must not throw into the pool, so its failure is kept here; an update ends on the driving
/// thread with the failure that comes first in macroblock order, after every job has finished.
/// Batches live in a deque that is reused from update to update: they stay where they are while
/// workers run, and cost no allocation once the largest update has been seen.
///
/// Thread safety: the driving thread calls everything; workers call only the decode function.
class UpdateJobs {
public:
    /// Decodes one record with the scratch memory of a worker. What it throws is kept.
    using DecodeRecord = std::function<void(MacroblockRecord&, unsigned int worker)>;

    /// Takes the pool, which may be null. When the pool has no running worker, jobs run at once on
    /// the driving thread, as worker number inPlaceWorker.
    UpdateJobs(std::unique_ptr<libthread::ThreadPool> pool, unsigned int inPlaceWorker);

    /// Waits for the jobs.
    ~UpdateJobs();

    bool HasPool() const { return m_pPool != nullptr; }

    /// The number under which the driving thread decodes; those of the workers are below it.
    unsigned int InPlaceWorker() const { return m_uiInPlaceWorker; }

    /// Runs walk, which may add records, and returns or throws only when every job has finished.
    /// macroblocks: how many records there may be, by which the size of a batch is chosen.
    /// Throws the first failure in macroblock order; a throw of walk itself comes after those of
    /// the records that it had added, since it stopped after them.
    template <class Walk>
    void Run(size_t macroblocks, Walk walk, const DecodeRecord& decode);

    /// Whether the next record begins a batch.
    bool NextBeginsBatch() const { return m_pBatch == nullptr; }

    /// The next record of this update. It stays valid until the next Run, and counts only once it
    /// is added.
    MacroblockRecord& NewRecord();

    /// Adds the record that NewRecord returned last.
    void AddRecord();

    /// Calls part(i) once for every i below parts, on the driving thread and on workers that are
    /// free, and returns when all calls have ended. No jobs may be left. Throws what one of the
    /// calls has thrown, the others nevertheless made.
    void Share(size_t parts, const std::function<void(size_t)>& part);

private:
    size_t ChooseBatchRecords(size_t macroblocks) const;
    void BeginBatch();
    void SendBatch();
    void DecodeBatch(RecordBatch& batch, unsigned int worker);
    void FinishAll();
    void RethrowFirstFailure();

    unsigned int m_uiInPlaceWorker;
    const DecodeRecord* m_pDecode = nullptr; ///< of the running update
    std::deque<RecordBatch> m_Batches;
    size_t m_uiBatchRecords = 0; ///< after which a batch is sent
    size_t m_uiBatchesSent = 0;
    RecordBatch* m_pBatch = nullptr; ///< that is being filled; null: a new one begins
    std::atomic<bool> m_bAnyFailure = false;
    std::unique_ptr<libthread::ThreadPool> m_pPool; ///< last: its end waits for the jobs
};

template <class Walk>
void UpdateJobs::Run(size_t macroblocks, Walk walk, const DecodeRecord& decode) {
    if (!m_pPool) {
        walk();
        return;
    }
    m_pDecode = &decode;
    m_uiBatchRecords = ChooseBatchRecords(macroblocks);
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

} // namespace Vostrel::libimagedecoder
