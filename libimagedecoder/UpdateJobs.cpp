#include "libimagedecoder/UpdateJobs.h"

#include "libthread/ThreadPool.h"

#include <utility>

namespace Vostrel::libimagedecoder {

UpdateJobs::UpdateJobs(std::unique_ptr<libthread::ThreadPool> pool, unsigned int inPlaceWorker)
    : m_pPool(std::move(pool)), m_uiInPlaceWorker(inPlaceWorker) {}

UpdateJobs::~UpdateJobs() = default;

MacroblockJob& UpdateJobs::NewRecord() {
    if (m_uiRecordsUsed == m_Records.size())
        m_Records.emplace_back();
    return m_Records[m_uiRecordsUsed++];
}

void UpdateJobs::Add(Function job) {
    if (m_pPool->runningThreads() > 0)
        m_pPool->addJob(job);
    else
        job(m_uiInPlaceWorker);
}

void UpdateJobs::WaitForAll() {
    if (m_pPool)
        m_pPool->waitAll();
}

void UpdateJobs::RethrowFirstFailure() {
    if (!m_bAnyFailure.exchange(false))
        return;
    std::exception_ptr first;
    for (size_t i = m_uiRecordsUsed; i-- > 0;) {
        if (m_Records[i].m_pFailure)
            first = std::exchange(m_Records[i].m_pFailure, nullptr);
    }
    std::rethrow_exception(first);
}

} // namespace Vostrel::libimagedecoder
