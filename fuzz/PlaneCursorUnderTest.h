#pragma once

#include "fuzz/GuardedPages.h"
#include "libimagedecoder/LbePlaneCursor.h"

#include <cstdint>
#include <new>

namespace Vostrel::fuzz {

/// The fast road through LBE's planes as the plane harness drives it: the one place that knows the
/// cursor's interface.
class PlaneCursorUnderTest {
public:
    PlaneCursorUnderTest(libimagedecoder::BitStreamReader& reader,
                         libimagedecoder::LbePlaneKernel kernel, GuardedPages::Flush flush)
        : m_Cursor(reader, kernel), m_Flush(flush) {}

    /// False when the plane is declined.
    bool Decode(const libimagedecoder::LbePlaneFormat& format) {
        using libimagedecoder::LbePlaneBytes;
        m_pPlane = new (Pages().Place(sizeof(LbePlaneBytes), m_Flush).data()) LbePlaneBytes;
        m_bHasHigh = LbePlaneBytes::HasHigh(format);
        const bool decoded = m_Cursor.DecodePlane(format, *m_pPlane);
        Check(Pages().Intact(), "bytes beside the samples are overwritten");
        return decoded;
    }

    /// A sample of the plane that was decoded.
    uint16_t Sample(size_t index) const {
        const unsigned high = m_bHasHigh ? m_pPlane->High()[index] : 0;
        return static_cast<uint16_t>(high << 8 | m_pPlane->Low()[index]);
    }

    /// Brings the reader to where the last plane ended.
    void GiveBack() { m_Cursor.GiveBack(); }

private:
    static GuardedPages& Pages() {
        static GuardedPages pages(sizeof(libimagedecoder::LbePlaneBytes));
        return pages;
    }

    libimagedecoder::LbePlaneCursor m_Cursor;
    GuardedPages::Flush m_Flush;
    libimagedecoder::LbePlaneBytes* m_pPlane = nullptr; ///< lies in the pages
    bool m_bHasHigh = false;
};

} // namespace Vostrel::fuzz
