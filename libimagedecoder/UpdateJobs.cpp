#include "libimagedecoder/UpdateJobs.h"

#include "libthread/ThreadPool.h"

#include <algorithm>
#include <new>
#include <utility>

namespace Vostrel::libimagedecoder {

UpdateJobs::UpdateJobs(std::unique_ptr<libthread::ThreadPool> pool, unsigned int inPlaceWorker)
    : m_uiInPlaceWorker(inPlaceWorker), m_pPool(std::move(pool)) {}

UpdateJobs::~UpdateJobs() = default;

MacroblockRecord& UpdateJobs::NewRecord() {
    if (m_pBatch == nullptr)
        BeginBatch();
    return m_pBatch->m_aRecords[m_pBatch->m_uiRecords];
}

void UpdateJobs::AddRecord() {
    if (++m_pBatch->m_uiRecords == m_uiBatchRecords)
        SendBatch();
}

/// A macroblock row of a large screen at once keeps the planes' rows in a worker's cache; but every
/// worker is to get several batches, so that all end at about the same time. Measured with
/// bench/compare, row 12: for a desktop, 32 records take 6 % longer than 120.
size_t UpdateJobs::ChooseBatchRecords(size_t macroblocks) const {
    constexpr size_t Fewest = 32;
    constexpr size_t BatchesOfWorker = 16;
    const size_t workers = std::max<size_t>(m_pPool->runningThreads(), 1);
    return std::clamp(macroblocks / (BatchesOfWorker * workers), Fewest, RecordBatch::Capacity);
}

void UpdateJobs::BeginBatch() {
    if (m_uiBatchesSent == m_Batches.size())
        m_Batches.emplace_back();
    m_pBatch = &m_Batches[m_uiBatchesSent];
    m_pBatch->m_uiRecords = 0;
}

void UpdateJobs::SendBatch() {
    RecordBatch& batch = *std::exchange(m_pBatch, nullptr);
    ++m_uiBatchesSent;
    // Two references fit into a std::function without an allocation.
    std::function<void(unsigned int)> job = [this, &batch](unsigned int worker) {
        DecodeBatch(batch, worker);
    };
    if (m_pPool->runningThreads() > 0)
        m_pPool->addJob(job);
    else
        job(m_uiInPlaceWorker);
}

void UpdateJobs::DecodeBatch(RecordBatch& batch, unsigned int worker) {
    for (size_t i = 0; i < batch.m_uiRecords; ++i) {
        MacroblockRecord& record = batch.m_aRecords[i];
        try {
            (*m_pDecode)(record, worker);
        } catch (...) {
            record.m_pFailure = std::current_exception();
            m_bAnyFailure = true;
        }
        record.m_puiOwned.reset();
    }
}

/// Any free thread takes the next part, so that a worker that wakes up late costs nothing.
void UpdateJobs::Share(size_t parts, const std::function<void(size_t)>& part) {
    std::atomic<size_t> next = 0;
    std::atomic<bool> failed = false;
    std::exception_ptr failure;
    const auto takeParts = [&] {
        for (size_t i = next++; i < parts; i = next++) {
            try {
                part(i);
            } catch (...) {
                if (!failed.exchange(true))
                    failure = std::current_exception();
            }
        }
    };
    const size_t helpers =
        m_pPool && parts > 1 ? std::min<size_t>(m_pPool->runningThreads(), parts - 1) : 0;
    try {
        for (size_t i = 0; i < helpers; ++i) {
            std::function<void(unsigned int)> job = [&takeParts](unsigned int /*worker*/) {
                takeParts();
            };
            m_pPool->addJob(job);
        }
    } catch (const std::bad_alloc&) {
        // Continue with fewer helpers.
    }
    takeParts();
    if (helpers > 0)
        m_pPool->waitAll();
    if (failure)
        std::rethrow_exception(failure);
}

/// Ends the update's jobs, those of an unfinished batch included, however the walk ended.
void UpdateJobs::FinishAll() {
    std::exception_ptr sendFailure;
    try {
        if (m_pBatch != nullptr && m_pBatch->m_uiRecords > 0)
            SendBatch();
    } catch (...) {
        sendFailure = std::current_exception();
    }
    m_pPool->waitAll();
    RethrowFirstFailure();
    if (sendFailure)
        std::rethrow_exception(sendFailure);
}

void UpdateJobs::RethrowFirstFailure() {
    if (!m_bAnyFailure.exchange(false))
        return;
    std::exception_ptr first;
    for (size_t i = m_uiBatchesSent; i-- > 0;) {
        RecordBatch& batch = m_Batches[i];
        for (size_t record = batch.m_uiRecords; record-- > 0;) {
            if (batch.m_aRecords[record].m_pFailure)
                first = std::exchange(batch.m_aRecords[record].m_pFailure, nullptr);
        }
    }
    std::rethrow_exception(first);
}

} // namespace Vostrel::libimagedecoder
