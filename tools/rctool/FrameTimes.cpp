#include "tools/rctool/FrameTimes.h"

#include <cerrno>
#include <iostream>
#include <stdexcept>
#include <system_error>

namespace Vostrel::rctool {

FrameTimes::FrameTimes(const std::string& path, bool replace) : m_path(path) {
    if (path.empty())
        return;
    m_pOut = &std::cout;
    if (path != StandardOutput) {
        m_output.emplace(path, replace);
        m_file.open(m_output->GetPath());
        m_pOut = &m_file;
    }
    if (!*m_pOut)
        throw std::runtime_error(path + ": " + std::generic_category().message(errno));
    *m_pOut << "update,time_us,quality,x,y,width,height,payload_bytes,failed,"
               "wall_ns,own_cpu_ns,worker_cpu_ns\n";
}

void FrameTimes::Add(size_t number, const recording::RecordedUpdate& update,
                     const recording::PlayedUpdate& played, const WorkTime& time) {
    if (m_pOut == nullptr)
        return;
    const auto& area = update.m_encoded.m_rectangle;
    *m_pOut << number << ',' << update.m_uiTime << ',' << update.m_encoded.m_uiQuality << ','
            << area.m_uiX << ',' << area.m_uiY << ',' << area.m_uiWidth << ',' << area.m_uiHeight
            << ',' << update.m_encoded.m_vuiPayload.size() << ','
            << (played.m_failure.empty() ? 0 : 1) << ',' << time.m_iWall << ',' << time.m_iOwn
            << ',' << time.Workers() << '\n';
}

void FrameTimes::Close() {
    if (m_pOut == nullptr)
        return;
    if (!m_pOut->flush())
        throw std::runtime_error(m_path + ": The frame times could not be written");
    if (m_output)
        m_output->Commit();
}

} // namespace Vostrel::rctool
