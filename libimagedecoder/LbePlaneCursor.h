#pragma once

#include "libimagedecoder/LbePlaneKernel.h"
#include "libimagedecoder/StreamWindow.h"

namespace Vostrel::libimagedecoder {

/// The fast path through the planes of LBE blocks.
///
/// The cursor lets a kernel decode from the stream's current window. It declines a plane that needs
/// a byte past the window, and the plain decoder takes the plane from its start.
class LbePlaneCursor {
public:
    /// readableAfter: see StreamWindow.
    LbePlaneCursor(BitStreamReader& reader, LbePlaneKernel kernel, size_t readableAfter = 0)
        : m_Window(reader, MaxRoom, readableAfter), m_pKernel(kernel) {}

    StreamWindow& GetWindow() { return m_Window; }

    /// Decodes one plane like DecodeLbePlane. False: nothing is decoded, and the reader is current
    /// at the plane's start; plane may be overwritten.
    bool DecodePlane(const LbePlaneFormat& format, LbePlaneBytes& plane);

    /// Makes the reader current.
    void GiveBack() { m_Window.GiveBack(); }

private:
    /// Of the planes with the longest codes: a kernel may read that far whatever the bits are.
    static constexpr size_t MaxRoom = LbePlaneRoom({LbePlaneBuffer::MaxSamples, 16, 10, 8});
    static_assert(MaxRoom <= StreamWindow::MaxRoom);

    StreamWindow m_Window;
    LbePlaneKernel m_pKernel;
};

} // namespace Vostrel::libimagedecoder
