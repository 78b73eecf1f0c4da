#pragma once

#include "libimagedecoder/BitStreamReader.h"
#include "libimagedecoder/LbePlaneKernel.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace Vostrel::libimagedecoder {

/// The fast road through the planes of a block.
///
/// The cursor borrows the position of a bit reader and lets a kernel decode from the stream's
/// current window. It declines a plane that needs a byte beyond the window, and the plain decoder
/// takes the plane from its start. So refills, padding and errors happen in one place only.
///
/// While the cursor holds a position the reader is stale; GiveBack makes it what it would be after
/// the plain decoder. That one takes a byte only when a read needs it and leaves its window empty,
/// so what it holds are the unread bits of the last byte it has touched.
class LbePlaneCursor {
public:
    LbePlaneCursor(BitStreamReader& reader, LbePlaneKernel kernel)
        : m_Reader(reader), m_pKernel(kernel) {}

    /// Decodes one plane like DecodeLbePlane. False: nothing is decoded, and the reader is current
    /// at the plane's start; plane may be overwritten.
    bool DecodePlane(const LbePlaneFormat& format, LbePlaneBytes& plane);

    /// Makes the reader current.
    void GiveBack();

private:
    static constexpr size_t MaxRoom = LbePlaneRoom({LbePlaneBuffer::MaxSamples, 16, 10, 8});

    bool Borrow();
    void CopyTail(size_t firstByte);

    BitStreamReader& m_Reader;
    LbePlaneKernel m_pKernel;
    bool m_bBorrowed = false;
    bool m_bInTail = false;
    const uint8_t* m_puiBytes = nullptr;        ///< the window, or its tail
    size_t m_uiBase = 0;                        ///< byte of the window where m_puiBytes starts
    size_t m_uiSize = 0;                        ///< bytes of the window from there on
    size_t m_uiPosition = 0;                    ///< next bit, counted from m_puiBytes
    std::array<uint8_t, 2 * MaxRoom> m_auiTail; ///< the window's last bytes, zeros behind them
};

} // namespace Vostrel::libimagedecoder
