#include "libimagedecoder/UpdateJobs.h"

#include "libthread/ThreadPool.h"

#include <utility>

namespace Vostrel::libimagedecoder {

UpdateJobs::UpdateJobs(std::unique_ptr<libthread::ThreadPool> pool, unsigned int inPlaceWorker)
    : m_pPool(std::move(pool)), m_uiInPlaceWorker(inPlaceWorker) {}

UpdateJobs::~UpdateJobs() = default;

MacroblockJob& UpdateJobs::NewRecord() {
    if (m_uiBatchesSent == m_Batches.size())
        m_Batches.emplace_back();
    return m_Batches[m_uiBatchesSent].m_aJobs[m_uiRecordsAdded];
}

void UpdateJobs::AddRecord() {
    if (++m_uiRecordsAdded == MacroblockBatch::Capacity)
        SendBatch();
}

void UpdateJobs::SendBatch() {
    MacroblockBatch& batch = m_Batches[m_uiBatchesSent++];
    batch.m_uiJobs = std::exchange(m_uiRecordsAdded, 0);
    Function job = (*m_pSchedule)(batch);
    if (m_pPool->runningThreads() > 0)
        m_pPool->addJob(job);
    else
        job(m_uiInPlaceWorker);
}

/// Ends the update's jobs, those of an unfinished batch included, however the walk ended.
void UpdateJobs::FinishAll() {
    std::exception_ptr sendFailure;
    try {
        if (m_uiRecordsAdded > 0)
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
        MacroblockBatch& batch = m_Batches[i];
        for (size_t job = batch.m_uiJobs; job-- > 0;) {
            if (batch.m_aJobs[job].m_pFailure)
                first = std::exchange(batch.m_aJobs[job].m_pFailure, nullptr);
        }
    }
    std::rethrow_exception(first);
}

} // namespace Vostrel::libimagedecoder
