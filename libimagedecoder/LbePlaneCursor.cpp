#include "libimagedecoder/LbePlaneCursor.h"

#include <cstring>

namespace Vostrel::libimagedecoder {

bool LbePlaneCursor::DecodePlane(const LbePlaneFormat& format, LbePlaneBytes& plane) {
    if (!m_bBorrowed && !Borrow())
        return false;
    const size_t firstByte = m_uiPosition / 8;
    if (!m_bInTail && firstByte + LbePlaneRoom(format) > m_uiSize)
        CopyTail(firstByte);
    const size_t position = m_pKernel(m_puiBytes, m_uiPosition, format, plane);
    if (position > m_uiSize * 8) {
        GiveBack();
        return false;
    }
    m_uiPosition = position;
    return true;
}

/// Takes the reader's position, if the bits that the reader holds are those of the byte before the
/// window's position. After a refill, and for a reader that started amid a byte elsewhere, they may
/// be others.
bool LbePlaneCursor::Borrow() {
    const IStreambuffer& stream = m_Reader.GetStream();
    const BitReaderState& state = m_Reader.GetState();
    const size_t fetchedBytes = stream.GetPosition();
    if (state.m_uiWindowBits != 0 || state.m_uiReserveBits > 7 || stream.GetPaddingCount() != 0)
        return false;
    if (stream.GetSize() == 0 || (state.m_uiReserveBits != 0 && fetchedBytes == 0))
        return false;
    if (state.m_uiReserveBits != 0) {
        const uint32_t lastByte = stream.GetWindow()[fetchedBytes - 1];
        if (state.m_uiReserve != (lastByte & ((1u << state.m_uiReserveBits) - 1)))
            return false;
    }
    m_bBorrowed = true;
    m_bInTail = false;
    m_puiBytes = stream.GetWindow();
    m_uiBase = 0;
    m_uiSize = stream.GetSize();
    m_uiPosition = fetchedBytes * 8 - state.m_uiReserveBits;
    return true;
}

/// Near the window's end, so that a kernel may read ahead of what there is.
void LbePlaneCursor::CopyTail(size_t firstByte) {
    const size_t tailBytes = m_uiSize - firstByte;
    std::memcpy(m_auiTail.data(), m_puiBytes + firstByte, tailBytes);
    std::memset(m_auiTail.data() + tailBytes, 0, MaxRoom);
    m_bInTail = true;
    m_puiBytes = m_auiTail.data();
    m_uiBase += firstByte;
    m_uiSize = tailBytes;
    m_uiPosition -= firstByte * 8;
}

void LbePlaneCursor::GiveBack() {
    if (!m_bBorrowed)
        return;
    m_bBorrowed = false;
    const size_t fetchedBytes = (m_uiPosition + 7) / 8;
    BitReaderState state;
    state.m_uiReserveBits = static_cast<uint32_t>(fetchedBytes * 8 - m_uiPosition);
    if (state.m_uiReserveBits != 0)
        state.m_uiReserve = m_puiBytes[fetchedBytes - 1] & ((1u << state.m_uiReserveBits) - 1);
    m_Reader.SetState(state);
    m_Reader.GetStream().SetPosition(m_uiBase + fetchedBytes);
}

} // namespace Vostrel::libimagedecoder
