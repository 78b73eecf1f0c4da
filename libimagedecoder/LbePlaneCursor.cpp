#include "libimagedecoder/LbePlaneCursor.h"

namespace Vostrel::libimagedecoder {

bool LbePlaneCursor::DecodePlane(const LbePlaneFormat& format, LbePlaneBytes& plane) {
    if (!m_Window.IsReady())
        return false;
    const uint8_t* const bytes = m_Window.GetBytes();
    const size_t position = m_pKernel(bytes, m_Window.GetPosition(), format, plane);
    // The plain decoder never peeks, so nothing is stalled.
    if (m_Window.Commit(BitRegister(bytes, position), 0))
        return true;
    GiveBack();
    return false;
}

} // namespace Vostrel::libimagedecoder
