#include "tools/rctool/FrameTimes.h"

#include <cinttypes>

namespace Vostrel::rctool {

FrameTimes::FrameTimes(const std::string& path, bool replace) {
    if (path.empty())
        return;
    m_output.emplace(path, replace);
    std::fputs("update,time_us,quality,x,y,width,height,payload_bytes,failed,"
               "wall_ns,own_cpu_ns,worker_cpu_ns\n",
               m_output->GetFile());
}

void FrameTimes::Add(size_t number, const recording::RecordedUpdate& update,
                     const recording::PlayedUpdate& played, const WorkTime& time) {
    if (!m_output)
        return;
    const auto& encoded = update.m_encoded;
    const auto& area = encoded.m_rectangle;
    std::fprintf(
        m_output->GetFile(),
        "%zu,%" PRIu64 ",%" PRIu32 ",%u,%u,%u,%u,%zu,%d,%" PRId64 ",%" PRId64 ",%" PRId64 "\n",
        number, update.m_uiTime, encoded.m_uiQuality, unsigned{area.m_uiX}, unsigned{area.m_uiY},
        unsigned{area.m_uiWidth}, unsigned{area.m_uiHeight}, encoded.m_vuiPayload.size(),
        played.m_failure.empty() ? 0 : 1, time.m_iWall, time.m_iOwn, time.Workers());
}

void FrameTimes::Close() {
    if (m_output)
        m_output->Commit();
}

} // namespace Vostrel::rctool
